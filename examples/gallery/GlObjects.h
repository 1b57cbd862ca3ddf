#pragma once

#include <vector>

/// A GL object of the calling thread's context.
struct GlObject {
    enum Kind { kShader, kProgram, kBuffer, kTexture };
    Kind kind;
    unsigned int name;

    /// Asks the GL whether it still knows the object.
    bool exists() const;
};

/// Puts functions that note every new shader and program into the toolkit's table of entry points.
/// To be called once, before the first thread starts.
void watchGlObjects();

/// What was created on the calling thread, in order.
std::vector<GlObject>& createdGlObjects();
