#pragma once

#include <string>
#include <vector>

/// 1, 2 or 5 times a power of ten, such that at most `most` of it make up the range.
float niceStep(float range, float most);

/// The multiples of a nice step between two numbers, at most about `most` of them.
std::vector<float> niceMarks(float from, float to, float most);

/// A number in as few digits as it takes: 0.5.
std::string plain(float number);

/// A whole number with its thousands apart: 1,076.
std::string grouped(float number);
