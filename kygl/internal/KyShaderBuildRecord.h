#pragma once

#include "KyShaderMessage.h"

#include <kygl/KyDiagnostics.h>
#include <kylib/KyResult.h>
#include <kylib/KyString.h>

#include <chrono>
#include <string>
#include <vector>

/// A stage of a build as its shader describes it.
struct KyShaderBuildStage {
    KyString file = {};
    KyString folder = {};
    KyString path = {};        ///< of the file
    KyString macroLines = {};  ///< in front of its text
    KyString source = {};      ///< the text without them
};

/// What is known of one build, or of all attempts at it.
struct KyShaderBuildRecord {
    bool hasVertex = false;  ///< of a compile one of both, of a link both
    bool hasFragment = false;
    KyShaderBuildStage vertex;
    KyShaderBuildStage fragment;
    unsigned int context = 0;
    KyResult result;
    std::chrono::nanoseconds time{};
    std::vector<KyShaderMessage> messages;
    std::vector<std::string> files;
    long objectsLeft = 0;  ///< GL objects of failed attempts, which nobody deletes

    bool isLink() const { return hasVertex && hasFragment; }
};

/// How serious a message is for the application that builds.
KyDiagnostics::Severity kySeverityOf(const KyShaderMessage& message);
/// The topic of a message, as diagnostics have it.
KyDiagnostics::Topic kyTopicOf(const KyShaderMessage& message);

/// What a sentence about a build ends with: " (context 3; macros: A; LIGHTS 3)".
/// @param where "context 3", or "" where that is known anyway
/// @param vertex,fragment null for a stage that it is not about
std::string kyCircumstances(const std::string& where, const KyShaderBuildStage* vertex,
                            const KyShaderBuildStage* fragment);
