#include "KyShaderBuildReport.h"

#include <atomic>

namespace {

std::atomic<KyShader::BuildObserver> sObserver{nullptr};

}  // namespace

KyShader::BuildObserver KyShader::setBuildObserver(BuildObserver observer) {
    return sObserver.exchange(observer);
}

KyShaderBuildReport::KyShaderBuildReport() : mObserver(sObserver.load(std::memory_order_acquire)) {
    if (mObserver != nullptr) mStart = std::chrono::steady_clock::now();
}

void KyShaderBuildReport::tell(const KyShader* vertex, const KyShader* fragment,
                               unsigned int context, const KyResult& result) const {
    if (mObserver == nullptr) return;
    const std::chrono::nanoseconds time = std::chrono::steady_clock::now() - mStart;
    KyString macros[2];
    const auto stage = [](const KyShader* shader, KyString& text) -> KyShader::Stage {
        if (shader == nullptr) return {};
        text = shader->mParameters.getDefineMacros();
        return {shader->mFileName.dataPtr(), shader->mFolderName.dataPtr(), text.dataPtr()};
    };
    mObserver({stage(vertex, macros[0]), stage(fragment, macros[1]), context, result, time});
}
