#pragma once

#include <kygl/KyShaderMacro.h>
#include <kylib/KyString.h>

#include <cstddef>
#include <string_view>

/// The result of reading one file.
enum class KyShaderRead {
    Done,        ///< all of it; it may be empty
    CannotRead,  ///< no such file, no permission, or nothing that is read: a folder, a pipe
    Failed,      ///< no descriptor was left, or an input error: another time it may be read
    TooMuch,     ///< it does not fit into what one expansion may still read
    TooMany,     ///< not tried: the expansion has read as many files as it may
    Endless,     ///< not tried: the file includes itself, directly or through others
    TooDeep,     ///< not tried: its directive is nested too deep in included files
};

/// Which top-level files are read; an included one is always a regular file.
enum class KyShaderTop {
    Regular,  ///< a regular file: nothing else can keep the reader waiting
    Any,      ///< also a pipe, which is read to its end
};

/// An expanded shader file.
struct KyShaderExpansion {
    KyString text;
    /// False if a file could not be read for a reason that may pass (`KyShaderRead::Failed`). The
    /// text contains nothing of it, so it should be read again before the next use.
    bool isComplete;
};

/// Watches an expansion and learns for each byte of the text where it comes from.
///
/// Bytes pass from the text that is still to be searched to the text that is finished. Directives
/// are taken off the front of the former, and files put there.
class KyShaderSourceObserver {
public:
    virtual ~KyShaderSourceObserver() = default;

    /// The first `count` bytes of what is to be searched are finished.
    virtual void finished(std::size_t count) = 0;
    /// A directive of these bytes was taken off the front of what is to be searched.
    /// @param name the file that it names; empty and followed by no file if it has no quotes
    virtual void directive(std::string_view text, std::string_view name) = 0;
    /// `text`, of the file at `path`, was put in front of what is to be searched: a line feed in
    /// front of each line and none at the end. The first such file is the top-level one, each
    /// other replaces the directive before it.
    /// @param error the system's, as in errno, if that is why the file was not read; otherwise 0
    virtual void file(const char* path, std::string_view text, KyShaderRead outcome, int error) = 0;
    /// The last `count` bytes of what is finished are to be searched once more.
    virtual void searchAgain(std::size_t count) = 0;
};

/// The path of a shader file.
KyString shaderPath(const KyString& root, const KyString& folder, const KyString& file);

/// The text of a shader file with its `#include` directives expanded, up to the first NUL; empty
/// when the file cannot be read. Included files are looked for beside the file at `path`, at every
/// depth. Time is linear in what is read; `KyShader::loadFromFile` documents the bounds on depth,
/// size and number of reads, and which failures pass. Throws `std::bad_alloc`.
/// @param observer may be null; the text is the same with and without
KyShaderExpansion loadShader(const char* path, KyShaderSourceObserver* observer = nullptr,
                             KyShaderTop top = KyShaderTop::Regular);

/// What the GL is given: the lines of the macros, then the expanded source.
KyString shaderText(const KyShaderParametersMacros& macros, const KyString& source);
