#pragma once

#include "ModelGL.h"

#include <functional>
#include <memory>
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
    std::vector<Step> steps;
    /// What an operation after the first leaves as it was when it runs out of memory; may be empty.
    std::function<std::string()> state;
    std::function<void()> end;      ///< lets go of what its objects do not; may be empty
    std::shared_ptr<void> objects;  ///< what the steps work on
};

/// A maker of the scenario in two contexts that nothing has used before.
struct Subject {
    const char* name;
    Scenario (*make)(ModelGL& gl, unsigned int first, unsigned int second);
};
extern const std::vector<Subject> kSubjects;
