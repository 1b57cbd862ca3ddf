#pragma once

#include "Message.h"

#include <functional>
#include <string>
#include <vector>

/// Tells where a line of a text comes from; an empty file name: it has none such.
using PlaceOf = std::function<Place(long line)>;

/// Reads a driver's log line by line. The forms of Mesa ("0:12(3): error: text"), NVIDIA ("0(12) :
/// error C1008: text") and AMD ("ERROR: 0:12: text") are known; any other line, and one whose place
/// is not found, becomes a message without a place.
std::vector<Message> readDriverLog(const std::string& log, const PlaceOf& placeOf);

/// The log of a link. Mesa's lines "error: text" concern both texts; which of them a line number
/// belongs to NVIDIA tells by the headings "Vertex info" and "Fragment info".
/// @param pair the place that stands for both
std::vector<Message> readLinkLog(const std::string& log, const Place& pair, const PlaceOf& vertex,
                                 const PlaceOf& fragment);
