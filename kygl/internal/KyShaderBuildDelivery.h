#pragma once

#include "KyShaderBuildRecord.h"

/// Reports a build to `KyDiagnostics`, then to the observer of builds, whose exceptions pass.
void kyDeliverBuild(const KyShaderBuildRecord& record);

/// Reports to `KyDiagnostics` what the messages of a build say, by topic, and that a build that
/// fails is tried again. Does not throw.
void kyDiagnoseBuild(const KyShaderBuildRecord& record) noexcept;

/// Frees what is kept between builds: the origins of texts, and how often builds have failed.
void kyForgetBuilds();
