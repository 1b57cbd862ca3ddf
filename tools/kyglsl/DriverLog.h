#pragma once

#include "Message.h"

#include <functional>
#include <string>
#include <vector>

/// Reads a driver's log line by line. The forms of Mesa ("0:12(3): error: text"), NVIDIA ("0(12) :
/// error C1008: text") and AMD ("ERROR: 0:12: text") are known; any other line, and one whose place
/// is not found, becomes a message without a severity.
/// @param placeOf tells where a line of the text comes from; an empty file name: it has none such
std::vector<Message> readDriverLog(const std::string& log,
                                   const std::function<Place(long line)>& placeOf);
