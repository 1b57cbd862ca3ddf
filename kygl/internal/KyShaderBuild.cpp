#include <kygl/KyShaderBuild.h>

#include "KyDiagnosis.h"
#include "KyListener.h"
#include "KyShaderBuildDelivery.h"

#include <memory>
#include <new>
#include <string>
#include <vector>

namespace {

KyListener<KyShaderBuild::Observer> sListener;

// A build with all that it points to.
class Shown {
public:
    explicit Shown(const KyShaderBuildRecord& record) {
        for (const KyShaderMessage& message : record.messages)
            add(message);
        for (const std::string& file : record.files)
            mFiles.push_back(file.c_str());
        fillPlaces(record.messages);
    }

    KyShaderBuild build(const KyShaderBuildRecord& record) const {
        return {stage(record.hasVertex, record.vertex),
                stage(record.hasFragment, record.fragment),
                record.context,
                record.result,
                record.time,
                mMessages.data(),
                static_cast<long>(mMessages.size()),
                mFiles.data(),
                static_cast<long>(mFiles.size())};
    }

private:
    static KyShaderBuild::Stage stage(bool isPart, const KyShaderBuildStage& from) {
        if (!isPart) return {};
        return {from.file.dataPtr(), from.folder.dataPtr(), from.macroLines.dataPtr()};
    }

    void add(const KyShaderMessage& message) {
        mLines.push_back(toString(message));
        for (const KyShaderPlace& place : message.places)
            mPlaces.push_back({place.file.empty() ? nullptr : place.file.c_str(),
                               place.file.empty() ? place.macro.c_str() : nullptr, place.line,
                               place.column});
    }

    // When nothing moves any more.
    void fillPlaces(const std::vector<KyShaderMessage>& messages) {
        const KyShaderBuild::Place* places = mPlaces.data();
        for (const KyShaderMessage& message : messages) {
            const auto count = static_cast<long>(message.places.size());
            mMessages.push_back({kySeverityOf(message), kyTopicOf(message), message.text.c_str(),
                                 places, count, mLines[mMessages.size()].c_str()});
            places += count;
        }
    }

    std::vector<std::string> mLines;
    std::vector<KyShaderBuild::Place> mPlaces;
    std::vector<KyShaderBuild::Message> mMessages;
    std::vector<const char*> mFiles;
};

}  // namespace

void KyShaderBuild::setObserver(Observer observer, void* user) {
    // The word comes first when one is set and last when it is removed: no build is missed.
    if (observer != nullptr) KyDiagnosis::setBuildObserved(true);
    sListener.set({observer, user});
    bool isSet = false;
    do
        KyDiagnosis::setBuildObserved(isSet = sListener.isSet());
    while (isSet != sListener.isSet());
    KyDiagnosis::forgetBuilds();
}

// What the observer throws passes; where there is no memory to show the build to it, it is not
// called.
void kyDeliverBuild(const KyShaderBuildRecord& record) {
    kyDiagnoseBuild(record);
    if (!sListener.isSet()) return;
    const auto make = [&]() -> std::unique_ptr<const Shown> {
        try {
            return std::make_unique<const Shown>(record);
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
    };
    if (const auto shown = make()) sListener.call(shown->build(record));
}
