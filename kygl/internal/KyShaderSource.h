#pragma once

#include <kygl/KyShaderMacro.h>
#include <kylib/KyString.h>

#include <cstddef>
#include <string_view>

/// What became of reading one file.
enum class KyShaderRead {
    Done,        ///< all of it; it may be empty
    CannotRead,  ///< no such file, or none that gives a byte
    TooMuch,     ///< it does not fit into what one expansion may still read
    Endless,     ///< not tried: the file includes itself, directly or through others
    TooDeep,     ///< not tried: its directive stands too deep in included files
};

/// Watches an expansion and learns for each byte of the text where it comes from.
///
/// The text that is still to be searched lies before the expansion, what it has finished behind it.
/// Bytes pass from one to the other, directives are taken off the front and files put there.
class KyShaderSourceObserver {
public:
    virtual ~KyShaderSourceObserver() = default;

    /// The first `count` bytes of what is to be searched are finished.
    virtual void finished(std::size_t count) = 0;
    /// A directive of these bytes was taken off the front of what is to be searched.
    /// @param name the file that it names
    virtual void directive(std::string_view text, std::string_view name) = 0;
    /// `text`, of the file at `path`, was put in front of what is to be searched: a line feed in
    /// front of each line and none at the end. The first such file is the top-level one, each
    /// other stands for the directive before it.
    virtual void file(const char* path, std::string_view text, KyShaderRead outcome) = 0;
    /// The last `count` bytes of what is finished are to be searched once more.
    virtual void searchAgain(std::size_t count) = 0;
};

/// Where a shader file lies.
KyString shaderPath(const KyString& root, const KyString& folder, const KyString& file);

/// The text of a shader file with its `#include` directives expanded, up to the first NUL; empty
/// when the file cannot be read. Included files are looked for beside the file at `path`, at every
/// depth. Time is linear in what is read; the bounds on depth and size are told at
/// `KyShader::loadFromFile`.
/// @param observer may be null; the text is the same with and without
KyString loadShader(const char* path, KyShaderSourceObserver* observer = nullptr);

/// What the GL is given: the lines of the macros, then the expanded source.
KyString shaderText(const KyShaderParametersMacros& macros, const KyString& source);
