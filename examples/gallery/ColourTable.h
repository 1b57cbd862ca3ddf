#pragma once

#include <kygl/KyTexture.h>

#include <mutex>

/// The colours of elevations, from the lowest to the highest: one `KyTexture` for all contexts.
/// A `KyTexture` belongs to one thread at a time, so this one, which two threads use, has a lock.
class ColourTable {
public:
    static constexpr int kTables = 2;

    ColourTable() { show(0); }

    /// Fills the texture with another table, unless that is the one that it holds.
    void show(int table);

    /// Binds the texture of a context, which is current, and sets how it is read.
    void bind(unsigned int context);

    /// Hands the textures of all contexts to `KyDeferredDeleteMap`. From then on there is none.
    void release();

private:
    std::mutex mMutex;
    KyTexture mTexture;
    int mTable = -1;
};
