// Switching one program among macro sets that are all built: beside a hash map whose text key is
// built at each switch. The sets differ in their last macro; those of `Restored` in each.

#include "support.h"
#include "variants.h"

#include <kygl/KyShaderMacro.h>
#include <kygl/KyShaderProgram.h>
#include <sogl/SoGLEW.h>

#include <algorithm>
#include <deque>
#include <numeric>
#include <random>
#include <unordered_map>
#include <vector>

namespace {

constexpr unsigned int kContext = 1;

// Goes round the sets; the first round builds them.
struct Switcher {
    NoOpGL gl;
    std::vector<std::string> texts;
    KyShaderProgram program;
    std::size_t present = 0;

    explicit Switcher(std::size_t sets) {
        for (std::size_t i = 0; i < sets; ++i)
            texts.push_back(lastMacro(i));
        writeShader("switch.glsl", "void main() {}\n");
        program.create("switch.glsl", "switch.glsl", "bench");
    }
    std::size_t next() const { return present + 1 < texts.size() ? present + 1 : 0; }
};

// A caller that takes one macro out and puts another in. It holds the texts as strings made
// beforehand, or as literals.
template <typename Text>
struct RemovePush : Switcher {
    std::vector<Text> macros;

    explicit RemovePush(std::size_t sets) : Switcher(sets) {
        for (const std::string& text : texts)
            macros.emplace_back(text.c_str());
        for (const std::string& text : kFixedMacros)
            program.pushMacro(text.c_str());
        program.pushMacro(macros[0]);
        for (std::size_t i = 0; i < sets; ++i)
            operator()();
    }

    void operator()() {
        program.removeMacro(macros[present]);
        present = next();
        program.pushMacro(macros[present]);
        program.apply(kContext);
    }
};

// A caller that keeps whole sets.
struct SetParameter : Switcher {
    std::deque<KyShaderParametersMacros> macroSets;

    explicit SetParameter(std::size_t sets) : Switcher(sets) {
        for (const std::string& last : texts) {
            KyShaderParametersMacros& macros = macroSets.emplace_back();
            for (const std::string& text : kFixedMacros)
                macros.pushMacro(text.c_str());
            macros.pushMacro(last.c_str());
        }
        for (std::size_t i = 0; i < sets; ++i)
            operator()();
    }

    void operator()() {
        present = next();
        program.setParameter(macroSets[present]);
        program.apply(kContext);
    }
};

// A caller that makes the whole set for each switch.
struct Anew : Switcher {
    std::vector<KyString> fixed;
    std::vector<KyString> last;

    explicit Anew(std::size_t sets) : Switcher(sets) {
        for (const std::string& text : kFixedMacros)
            fixed.emplace_back(text.c_str());
        for (const std::string& text : texts)
            last.emplace_back(text.c_str());
        for (std::size_t i = 0; i < sets; ++i)
            operator()();
    }

    void operator()() {
        present = next();
        KyShaderParametersMacros macros;
        for (const KyString& text : fixed)
            macros.pushMacro(text);
        macros.pushMacro(last[present]);
        program.setParameter(macros);
        program.apply(kContext);
    }
};

// A caller that has two texts for each place of a set and keeps the order: what follows the first
// macro that changes is removed and pushed as well. The bits of its number make a set, the lowest
// one at the first of the places that vary, and the sets come in the order of a shuffle.
struct Restored : Switcher {
    static constexpr std::size_t kPlaces = 7;
    std::vector<KyString> macros[2];
    std::size_t fixedPlaces = kPlaces;
    std::vector<std::size_t> order;

    explicit Restored(std::size_t sets) : Switcher(sets), order(sets) {
        for (std::size_t i = 1; i < sets; i *= 2)
            --fixedPlaces;
        for (const char* const text :
             {"CLIP", "FOG", "NORMAL_MAP", "SHADOWS 2", "CONTOURS", "PALETTE 256", "LIGHTS 3"}) {
            macros[0].emplace_back((std::string("NO_") + text).c_str());
            macros[1].emplace_back(text);
        }
        std::iota(order.begin(), order.end(), 0);
        std::shuffle(order.begin(), order.end(), std::mt19937(1));
        for (std::size_t place = 0; place < kPlaces; ++place)
            program.pushMacro(macro(order[0], place));
        for (std::size_t i = 0; i < sets; ++i)
            operator()();
    }

    const KyString& macro(std::size_t set, std::size_t place) const {
        return macros[place < fixedPlaces ? 0 : set >> (place - fixedPlaces) & 1][place];
    }

    void operator()() {
        const std::size_t former = order[present];
        present = next();
        const std::size_t set = order[present];
        std::size_t first = 0;
        while (&macro(former, first) == &macro(set, first))
            ++first;
        for (std::size_t place = first; place < kPlaces; ++place)
            program.removeMacro(macro(former, place));
        for (std::size_t place = first; place < kPlaces; ++place)
            program.pushMacro(macro(set, place));
        program.apply(kContext);
    }
};

struct TextKey : Switcher {
    std::vector<std::string> macros = kFixedMacros;
    std::unordered_map<std::string, GLuint> programs;

    explicit TextKey(std::size_t sets) : Switcher(sets) {
        macros.emplace_back();
        for (const std::string& text : texts) {
            macros.back() = text;
            programs.emplace(textKey(kContext, macros), static_cast<GLuint>(programs.size() + 1));
        }
    }

    void operator()() {
        present = next();
        macros.back() = texts[present];
        glUseProgram(programs.find(textKey(kContext, macros))->second);
        if (glGetError() != GL_NO_ERROR) std::abort();
    }
};

}  // namespace

void addMacroSwitch() {
    for (const std::size_t sets : {2U, 16U, 128U}) {
        const std::string name = "switch" + std::to_string(sets);
        addSide(name + "/removePush", [=] { return RemovePush<KyString>(sets); });
        addSide(name + "/literals", [=] { return RemovePush<const char*>(sets); });
        addSide(name + "/setParameter", [=] { return SetParameter(sets); });
        addSide(name + "/restored", [=] { return Restored(sets); });
        addSide(name + "/anew", [=] { return Anew(sets); });
        addSide(name + "/peer", [=] { return TextKey(sets); });
        addRatio({name + "/removePush", name + "/peer", 2});
        addRatio({name + "/literals", name + "/peer"});
        addRatio({name + "/setParameter", name + "/peer", 5});
        addRatio({name + "/restored", name + "/peer"});
        addRatio({name + "/anew", name + "/peer"});
    }
    addRatio({"switch128/removePush", "switch2/removePush", 2});
    addRatio({"switch128/setParameter", "switch2/setParameter", 2});
    addRatio({"switch128/restored", "switch2/restored"});
    addRatio({"switch128/anew", "switch2/anew", 2});
}
