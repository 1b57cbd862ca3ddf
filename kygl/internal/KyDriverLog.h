#pragma once

#include "KyShaderMessage.h"

#include <functional>
#include <string>
#include <vector>

/// Where a line of the text that a driver was given comes from, and a column of it, 0 if the driver
/// names none; not known if there is no such line.
using KyPlaceOf = std::function<KyShaderPlace(long line, long column)>;

/// Reads a driver's log line by line. The forms of Mesa ("0:12(3): error: text"), NVIDIA ("0(12) :
/// error C1008: text") and the compilers of one family, AMD, Apple, ANGLE and glslang ("ERROR:
/// 0:12: text"), are known; any other line, and one whose place is not found, becomes a message
/// without a place. An indented line is a note of the message above it: a candidate of a call.
std::vector<KyShaderMessage> kyReadDriverLog(const std::string& log, const KyPlaceOf& placeOf);

/// The log of a link. Lines "error: text" concern both texts; which of them a line number belongs
/// to is known by NVIDIA's headings "Vertex info" and "Fragment info". Mesa ends some sentences
/// after their line feed: that full stop is left out.
/// @param pair the places of both texts
std::vector<KyShaderMessage> kyReadLinkLog(const std::string& log,
                                           const std::vector<KyShaderPlace>& pair,
                                           const KyPlaceOf& vertex, const KyPlaceOf& fragment);
