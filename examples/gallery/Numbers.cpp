#include "Numbers.h"

#include <cmath>
#include <cstdio>

float niceStep(float range, float most) {
    const float wanted = range / most;
    const float power = std::pow(10.0F, std::floor(std::log10(wanted)));
    for (const float step : {1.0F, 2.0F, 5.0F})
        if (step * power >= wanted) return step * power;
    return 10 * power;
}

std::vector<float> niceMarks(float from, float to, float most) {
    const float step = niceStep(to - from, most);
    const float first = std::ceil(from / step);
    const auto steps = static_cast<int>(std::floor(to / step) - first);
    std::vector<float> marks;
    for (int i = 0; i <= steps; ++i)
        marks.push_back(step * (first + static_cast<float>(i)));
    return marks;
}

std::string plain(float number) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(number));
    return text;
}

std::string grouped(float number) {
    std::string text = std::to_string(std::lround(number));
    for (std::size_t at = text.size(); at > 3 && text[at - 4] != '-'; text.insert(at, 1, ','))
        at -= 3;
    return text;
}
