#pragma once

#include "../support/RecordedGL.h"

#include <functional>
#include <string>
#include <vector>

/// One subject of the storm: operations that follow each other on objects of its own.
struct Scenario {
    struct Step {
        const char* name;
        /// Runs the operation in whatever state a failure of it left. @return whether its result is
        /// there afterwards
        std::function<bool()> run;
    };
    std::vector<Step> steps;  ///< the last one lets go of everything
    /// What an operation after the first leaves as it was when it runs out of memory; may be empty.
    std::function<std::string()> state = {};
};

/// A maker of the scenario in two contexts that nothing has used before.
struct Subject {
    const char* name;
    Scenario (*make)(RecordedGL& gl, unsigned int first, unsigned int second);
};
extern const std::vector<Subject> kSubjects;
