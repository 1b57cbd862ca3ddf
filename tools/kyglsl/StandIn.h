#pragma once

#include <string>

enum class Stage { Vertex, Fragment };

/// A shader of the other stage that links with one by itself: it has the declarations of its
/// varyings, and writes them in a vertex stage. The directives of the text stay, so that the
/// driver decides on conditions there as it does in the text. Declarations that only come from
/// macros are not found.
/// @param stage,text of the shader, as the GL is given it
std::string standInFor(Stage stage, const std::string& text);
