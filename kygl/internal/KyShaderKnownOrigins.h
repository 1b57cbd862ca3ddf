#pragma once

#include "KyShaderOrigins.h"

#include <list>

/// The origins of a text that was read while somebody listens to builds. They are kept for the
/// messages of later builds, as many as a large application has files: an object of this class
/// borrows them from that store, and its destructor gives them back.
///
/// Any thread may have objects of its own. A lock guards the store; it is not held while a file is
/// read.
class KyShaderKnownOrigins {
public:
    /// The path as messages name it: from the root on, where that reads the same files.
    static KyString fullPath(const KyString& path);

    /// Reads a file. Throws `std::bad_alloc`.
    explicit KyShaderKnownOrigins(const KyString& path);
    /// Finds the origins of a text that was read from this file; where nobody listened then, reads
    /// the file once more. Throws `std::bad_alloc`.
    KyShaderKnownOrigins(const KyString& path, const KyString& source);
    ~KyShaderKnownOrigins();
    KyShaderKnownOrigins(const KyShaderKnownOrigins&) = delete;
    KyShaderKnownOrigins& operator=(const KyShaderKnownOrigins&) = delete;

    /// @return null if the file has changed since the text was read
    const KyShaderOrigins* get() const { return mOrigins.empty() ? nullptr : &mOrigins.front(); }

    /// Forgets all that is not borrowed.
    static void clear();

private:
    std::list<KyShaderOrigins> mOrigins;  ///< one or none
};
