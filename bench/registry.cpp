// A capability question from many threads at once: beside a mutex and a hash map. Each thread makes
// a side of its own, over what all share.

#include "support.h"

#include <kygl/kygl.h>

#include <mutex>
#include <unordered_map>

namespace {

struct Library {
    NoOpGL gl;

    explicit Library(unsigned int contexts) {
        for (unsigned int id = 0; id < contexts; ++id)
            kyglSetContext(id);
    }
    ~Library() { kyglClearAllContexts(); }
    bool available(unsigned int id) const { return kyglGLSLAvailable(id); }
};

struct Plain {
    static inline std::mutex sMutex;
    static inline std::unordered_map<unsigned int, GLEWContextStruct> sRecords;

    explicit Plain(unsigned int contexts) {
        const std::lock_guard<std::mutex> hold(sMutex);
        GLEWContextStruct flags{};
        flags.ARB_shading_language_100 = flags.ARB_shader_objects = 1;
        flags.ARB_fragment_shader = flags.ARB_vertex_shader = 1;
        sRecords.clear();
        for (unsigned int id = 0; id < contexts; ++id)
            sRecords[id] = flags;
    }

    bool available(unsigned int id) const {
        const std::lock_guard<std::mutex> hold(sMutex);
        const auto found = sRecords.find(id);
        if (found == sRecords.end()) return false;
        const GLEWContextStruct& flags = found->second;
        return flags.ARB_shading_language_100 && flags.ARB_shader_objects &&
               flags.ARB_fragment_shader && flags.ARB_vertex_shader;
    }
};

template <typename Registry>
struct Asker {
    Registry registry;
    unsigned int contexts;
    unsigned int id = 0;

    explicit Asker(unsigned int count) : registry(count), contexts(count) {}

    void operator()() {
        id = id + 1 < contexts ? id + 1 : 0;
        benchmark::DoNotOptimize(registry.available(id));
    }
};

}  // namespace

void addRegistry() {
    for (const unsigned int contexts : {8U, 1000U}) {
        const std::string name = "registry" + std::to_string(contexts);
        const auto threads = [](benchmark::internal::Benchmark* side) {
            side->ThreadRange(1, 8)->UseRealTime();
        };
        threads(addSide(name + "/library", [=] { return Asker<Library>(contexts); }));
        threads(addSide(name + "/peer", [=] { return Asker<Plain>(contexts); }));
        for (const char* const suffix : {"/threads:1", "/threads:2", "/threads:4", "/threads:8"})
            addRatio({name + "/library" + suffix, name + "/peer" + suffix});
    }
}
