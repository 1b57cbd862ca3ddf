#include "support/Allocations.h"
#include "support/Messages.h"
#include "support/RecordedGL.h"

#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <sogl/SoGLContext.h>
#include <sogl/SoGLXEW.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>
#include <random>
#include <regex>
#include <sstream>
#include <string_view>
#include <thread>

#include <GL/glx.h>  // last: its macros break others

namespace {

using Calls = std::vector<std::string>;

// The X server and the GLX of this program. What the library's lock is there for is not locked
// here, so that ThreadSanitizer tells when that lock is not held.
struct Server {
    void add(const std::string& pattern, unsigned int last = 126) {
        XFontStruct& font = fonts[pattern];
        font.fid = fonts.size();
        font.min_char_or_byte2 = 32;
        font.max_char_or_byte2 = last;
        font.min_bounds = {0, 6, 6, 10, 3, 0};
        font.ascent = 10;
        font.descent = 3;
    }
    Calls takeAsked() { return std::exchange(asked, {}); }

    std::map<std::string, XFontStruct> fonts;  // by the pattern that finds them
    Calls asked;                               // patterns, in order
    Calls listed;                              // the names of a family
    std::vector<char*> names;                  // as handed out and not given back
    GLXContextID current = 0;                  // 0: no context
    Display* display = nullptr;                // that was asked last
    int lists = 0;                             // of the font loaded last
    bool hasLists = true;                      // for the next font
    long measured = 0;                         // bytes of XTextWidth
    long atomNames = 0;                        // as handed out and not given back
};

Server server;
RecordedGL* sGL = nullptr;

// As the server would have it, where a tab leads backwards; no line is narrower than nothing.
int advanceOf(std::string_view text) {
    int width = 0;
    for (const char each : text)
        width += each == '\t' ? -20 : 5 + static_cast<unsigned char>(each) % 3;
    return width;
}
int widthOf(std::string_view text) {
    return std::max(0, advanceOf(text));
}

template <typename... Arguments>
std::string call(const char* name, Arguments... arguments) {
    std::ostringstream text;
    [[maybe_unused]] const char* between = "";
    text << name << '(';
    ((text << std::exchange(between, ", ") << arguments), ...);
    return text.str() + ')';
}

template <typename... Arguments>
void note(const char* name, Arguments... arguments) {
    if (!sGL->muted) sGL->note(name, call(name, arguments...));
}

const char* bitsOf(const GLubyte* mask, GLsizei width, GLsizei height) {
    if (mask == nullptr || width == 0) return mask == nullptr ? "null" : "unread";
    const auto* const end = mask + ((width | 7) + 1L) / 8 * ((height | 7) + 1L);
    return std::count(mask, end, 0xFF) == end - mask ? "box" : "holes";
}

// In place of those recorders that do not tell what a pointer points to.
void putRecorders() {
    __glewGenLists = [](GLsizei range) {
        note("glGenLists", range);
        return static_cast<GLuint>(server.hasLists ? server.lists += 1000 : 0);
    };
    __glewColor4fv = [](const GLfloat* c) { note("glColor4fv", c[0], c[1], c[2], c[3]); };
    __glewBitmap = [](GLsizei width, GLsizei height, GLfloat left, GLfloat below, GLfloat x,
                      GLfloat y, const GLubyte* mask) {
        const char* const bits = bitsOf(mask, width, height);
        note("glBitmap", width, height, left, below, x + 0, y + 0, bits);  // -0 as 0
    };
    __glewCallLists = [](GLsizei count, GLenum type, const void* lists) {
        note("glCallLists", count, type,
             std::string_view(static_cast<const char*>(lists), static_cast<std::size_t>(count)));
    };
}

}  // namespace

extern "C" {
XFontStruct* XLoadQueryFont(Display* display, const char* name) {
    server.display = display;
    server.asked.emplace_back(name);
    const auto found = server.fonts.find(name);
    return found != server.fonts.end() ? &found->second : nullptr;
}
int XTextWidth(XFontStruct*, const char* text, int length) {
    server.measured += length;
    return advanceOf({text, static_cast<std::size_t>(length)});
}
char** XListFonts(Display*, const char* pattern, int most, int* count) {
    server.asked.push_back(call(pattern, most));
    for (std::string& name : server.listed)
        server.names.push_back(name.data());
    *count = static_cast<int>(server.names.size());
    return *count > 0 ? server.names.data() : nullptr;
}
int XFreeFontNames(char** names) {
    EXPECT_EQ(names, server.names.data());
    server.names.clear();
    return 0;
}
Bool XGetFontProperty(XFontStruct* font, Atom property, unsigned long* value) {
    *value = 100 * property + font->fid;
    return True;
}
char* XGetAtomName(Display*, Atom atom) {
    ++server.atomNames;
    server.asked.push_back(call("XGetAtomName", atom));
    return strdup(("-got-" + std::to_string(atom)).c_str());
}
int XFree(void* name) {
    --server.atomNames;
    std::free(name);
    return 1;
}
void glXUseXFont(Font font, int first, int count, int list) {
    note("glXUseXFont", font, first, count, list);
}
GLXContext glXGetCurrentContext() {
    return server.current != 0 ? reinterpret_cast<GLXContext>(&server) : nullptr;
}
GLXContextID glXGetContextIDEXT(GLXContext) {
    return server.current;
}
}

namespace {

struct Settings {
    int alignX = -1, alignY = -1, x = 0, y = 0;
    float back = 0, fore = 1;  // alphas

    void set() const {
        KyGLText::setAlignment(alignX, alignY);
        KyGLText::setPixelOffset(x, y);
        KyGLText::setBackground(0.25f, 0.5f, 0.75f, back);
        KyGLText::setForeground(1, 1, 1, fore);
    }
};

Calls linesOf(const std::string& text) {
    static const std::regex breaks("\n|\\\\n");
    return Calls(std::sregex_token_iterator(text.begin(), text.end(), breaks, -1), {});
}

// The lines, the width and the height.
using Extent = std::array<int, 3>;
Extent measured(const std::string& text) {
    Extent all = {0, 0, -3};
    for (const std::string& line : linesOf(text))
        all = {all[0] + 1, std::max(all[1], widthOf(line)), all[2] + 16};
    return all;
}

Calls operator+(Calls all, const Calls& more) {
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

std::string move(double x, double y) {
    return call("glBitmap", 0, 0, 0, 0, x + 0, y + 0, "null");
}

// The GL calls of a render at 1.5, -2, 0.25 in a font of 13 pixels, 3 of them below the baseline.
// Without lists there are no characters, and the pen has no way to go back.
Calls model(int lists, const Settings& with, const std::string& text,
            const Calls& equation = {"glBlendEquation(32774)"}) {
    const double height = measured(text)[2];
    const double up = with.alignY == -1  ? height
                      : with.alignY < -1 ? height + 4
                      : with.alignY == 0 ? height / 2 + 4
                                         : 4;
    const Calls blend = {"glPushAttrib(8192)", "glEnable(3042)"};
    const bool blendBoxes = with.back > 0 && with.back < 1;
    const bool blendText = !blendBoxes && with.fore > 0 && with.fore < 1;
    Calls boxes, characters;
    if (blendBoxes) boxes = blend + Calls{"glBlendFunc(770, 771)"} + equation;
    if (blendText) characters = blend;
    boxes = boxes + Calls{call("glColor4fv", 0.25, 0.5, 0.75, with.back),
                          "glRasterPos3f(1.5, -2, 0.25)",
                          move(with.x, with.y + up - 3),
                          "glPixelStorei(3317, 1)",
                          "glPixelStorei(3314, 0)",
                          "glPixelStorei(3315, 0)"};
    characters = characters + Calls{call("glColor4fv", 1, 1, 1, with.fore),
                                    "glRasterPos3f(1.5, -2, 0.25)", move(with.x, with.y + up)};
    for (const std::string& line : linesOf(text)) {
        const int width = widthOf(line);
        const double left = with.alignX < 0 ? 0 : with.alignX == 0 ? width / 2.0 : width;
        boxes = boxes + Calls{move(-left - 2, -13),
                              call("glBitmap", width + 4, 13, 0, 0, 2 + left, -3, "box")};
        characters.push_back(move(-left, -13));
        if (lists != 0) characters.push_back(call("glCallLists", line.size(), 5121, line));
        characters.push_back(move(left - (lists != 0 ? width : 0), -3));
    }
    return Calls{call("glListBase", lists)} + (with.back > 0 ? boxes : Calls()) +
           (with.fore > 0 ? characters : Calls()) +
           (blendBoxes || blendText ? Calls{"glPopAttrib()"} : Calls());
}

std::string name(const std::string& family, const std::string& style, int size) {
    return "-*-" + family + '-' + style + "-normal-*-" + std::to_string(size) + "-*-*-*-*-*-*-*";
}
const std::string kDefault = name("helvetica", "bold-r", 12);

struct TextTest : testing::Test {
    TextTest() {
        sGL = &gl;
        server = {};
        putRecorders();
        server.add(kDefault);
        KyGLText::setDisplay(reinterpret_cast<Display*>(&server));
        newContext();
    }
    ~TextTest() override {
        KyGLText::setDisplay(nullptr);
        KyGLText::setDefaultFontSize(12);
        KyGLText::setDefaultFontFamily("helvetica");
        KyGLText::setCacheContext(0);
        kyglClearAllContexts();
    }

    // One that no test has used: settings live as long as the process.
    unsigned int newContext() {
        static unsigned int last = 0;
        kyglSetContext(++last);
        server.current = last;
        SoGLContext::getCurrent(false);  // asks the driver
        gl.takeCalls();
        return last;
    }
    template <typename Character>
    Calls rendered(const Character* text) {
        gl.takeCalls();
        KyGLText::render(1.5f, -2, 0.25f, text);
        return gl.takeCalls();
    }
    template <typename Character>
    static Extent extent(const Character* text) {
        Extent all = {-1, -1, -1};
        all[0] = KyGLText::textExtent(text, all[1], all[2]);
        return all;
    }

    RecordedGL gl;
};

}  // namespace

TEST_F(TextTest, everyCallOfARenderAndEveryNumberInIt) {
    const int alignX[] = {-2, 0, 2}, alignY[] = {-1, 0, 2, -2, -3}, offsets[] = {0, 7, -3};
    const float back[] = {0, 0.5f, 1, -1, 2}, fore[] = {1, 0.5f, 0, 2};
    const char* const texts[] = {"",    "a",    "il\nWidest\n\n\\nend\\", "\n\nb\\\\n",
                                 "\\n", "a\tb", "a\r\xff\\N\\n"};
    const std::tuple<const char*, const char*, GLXContextID, Calls> drivers[] = {
        {"1.4", "GL_EXT_blend_minmax", 1, {"glBlendEquation(32774)"}},
        {"1.3", "GL_EXT_blend_minmax", 1, {"glBlendEquationEXT(32774)"}},
        {"1.3", "GL_EXT_blend", 1, {}},
        {"1.4", "GL_EXT_blend_minmax", 0, {}}};
    std::mt19937 random(1);
    const auto any = [&](const auto& choices) { return choices[random() % std::size(choices)]; };
    for (const auto& [version, extensions, current, equation] : drivers) {
        gl.strings = {{GL_VERSION, version}, {GL_EXTENSIONS, extensions}};
        newContext();
        const int base = KyGLText::fontBase(12);
        server.current *= current;
        for (int i = 0; i < 3000; ++i) {
            const Settings with = {any(alignX),  any(alignY), any(offsets),
                                   any(offsets), any(back),   any(fore)};
            const char* const text = any(texts);
            with.set();
            ASSERT_EQ(rendered(text), model(base, with, text, equation)) << version << extensions;
            ASSERT_EQ(extent(text), measured(text)) << text;
            ASSERT_EQ(gl.takeCalls(), Calls()) << "measuring made GL calls";
        }
    }
    EXPECT_EQ(gl.errorReads, 4) << "those of the fonts' lists";
}

TEST_F(TextTest, aFontIsAskedForOnceInEachContextAndAnewAfterCleanUp) {
    KyGLText::cleanUp();
    EXPECT_EQ(server.takeAsked(), Calls()) << "cleanUp made settings";
    const std::string any = name("*", "medium-i", 14), lucida = name("lucida", "medium-i", 14);
    const std::string none = name("none", "bold-i", 99);
    const auto setLucida = [] { KyGLText::setFont(14, false, true, "lucida"); };
    const auto setNone = [] { KyGLText::setFont(99, true, true, "none"); };
    server.add(any, 200);
    setLucida();
    setNone();
    EXPECT_EQ(server.takeAsked(), (Calls{kDefault, lucida, any, none, name("*", "bold-i", 99)}));
    EXPECT_EQ(gl.takeCalls(), (Calls{"glGenLists(127)", "glXUseXFont(1, 32, 95, 1032)",
                                     "glGenLists(201)", "glXUseXFont(2, 32, 169, 2032)"}));
    server.add(none);
    setNone();
    EXPECT_EQ(rendered("a"), Calls()) << "a font that failed came back";
    setLucida();
    EXPECT_EQ(rendered("a"), model(2000, {}, "a"));
    EXPECT_EQ(server.takeAsked(), Calls());
    const unsigned int second = newContext();
    setLucida();
    EXPECT_EQ(server.takeAsked(), (Calls{kDefault, lucida, any}));

    kyglSetContext(second - 1);
    KyGLText::setAlignment(1, 1);
    gl.takeCalls();
    KyGLText::cleanUp();
    std::sort(gl.calls.begin(), gl.calls.end());
    EXPECT_EQ(gl.calls, (Calls{"glDeleteLists(1000, 127)", "glDeleteLists(2000, 201)"}));
    EXPECT_EQ(rendered("a"), Calls());
    EXPECT_EQ(extent("a"), Extent());
    setNone();
    EXPECT_EQ(rendered("a"), model(5000, {1, 1}, "a"));
    kyglSetContext(second);
    EXPECT_EQ(rendered("a"), model(4000, {}, "a")) << "cleanUp reached another context";
}

TEST_F(TextTest, theDefaultsActOnNewContextsAndOnFontBase) {
    EXPECT_EQ(KyGLText::defaultFontSize() + KyGLText::cacheContext(), 12);
    EXPECT_STREQ(KyGLText::defaultFontFamily(), "helvetica");
    extent("");
    std::string family = "odd";
    KyGLText::setDefaultFontFamily(family.c_str());
    family = "xxx";
    KyGLText::setDefaultFontSize(25);
    EXPECT_EQ(rendered("a"), model(1000, {}, "a"));
    server.add(name("odd", "bold-r", 14));
    EXPECT_EQ(KyGLText::fontBase(14), 2000);
    EXPECT_EQ(rendered("a"), model(2000, {}, "a"));
    const unsigned int second = newContext();
    KyGLText::setFont(12, true, false, "helvetica");
    KyGLText::setDefaultFontFamily(nullptr);
    EXPECT_EQ(KyGLText::fontBase(13), -1);
    EXPECT_EQ(server.takeAsked(),
              (Calls{kDefault, name("odd", "bold-r", 14), name("odd", "bold-r", 25),
                     name("*", "bold-r", 25), kDefault, name("", "bold-r", 13),
                     name("*", "bold-r", 13)}));
    KyGLText::setCacheContext(static_cast<int>(second));
    std::thread([] { KyGLText::setFont(12, true, false, "helvetica"); }).join();
    EXPECT_EQ(rendered("a"), model(3000, {}, "a")) << "a thread without an id set no font here";
}

TEST_F(TextTest, theDisplayIsTheOneSetOrThatOfTheContext) {
    KyGLText::fontBase(25);
    EXPECT_EQ(server.display, KyGLText::display());
    KyGLText::setDisplay(nullptr);
    const auto ofContext = [] { return reinterpret_cast<Display*>(sGL); };
    const auto former = std::exchange(SoGLXEW::__glewXGetCurrentDisplay, ofContext);
    KyGLText::fontBase(26);
    EXPECT_EQ(server.display, ofContext());
    server.takeAsked();
    EXPECT_EQ(KyGLText::availablePointSizes(nullptr, 0, "a", true, true), 0);
    SoGLXEW::__glewXGetCurrentDisplay = [] { return static_cast<Display*>(nullptr); };
    EXPECT_EQ(KyGLText::fontBase(27), -1);
    SoGLXEW::__glewXGetCurrentDisplay = nullptr;
    EXPECT_EQ(KyGLText::fontBase(28), -1);
    EXPECT_EQ(server.takeAsked(), Calls()) << "a display was made up";
    SoGLXEW::__glewXGetCurrentDisplay = former;
}

TEST_F(TextTest, aFontWithoutListsGetsThemWhenItCan) {
    const Settings with = {0, 0, 3, 4, 1, 0.5f};
    const char* const variable = "TWILAN_KYGLTEXT_NOGL";
    for (const bool switched : {false, true}) {
        const GLXContextID context = newContext();
        if (switched) setenv(variable, "1", 1);
        if (!switched) server.current = 0;
        with.set();
        EXPECT_EQ(KyGLText::fontBase(12), 0);
        EXPECT_EQ(rendered("ab\nc"), model(0, with, "ab\nc"));
        server.current = context;
        unsetenv(variable);
        server.hasLists = false;
        EXPECT_EQ(rendered("ab"), Calls{"glGenLists(127)"} + model(0, with, "ab"))
            << "the application's lists were written over";
        server.hasLists = true;
        const int base = server.lists + 1000;
        const Calls made = {"glGenLists(127)", call("glXUseXFont", 1, 32, 95, base + 32)};
        EXPECT_EQ(rendered("ab"), made + model(base, with, "ab"));
        setenv(variable, "1", 1);
        EXPECT_EQ(rendered("ab"), model(base, with, "ab"));
        unsetenv(variable);
    }
}

// An i has ink, b is blank, f flat, z without any width, - missing.
const std::map<char, XCharStruct> kGlyphs = {{'i', {0, 5, 6, 9, 2, 0}},
                                             {'b', {0, 0, 4, 0, 0, 0}},
                                             {'f', {0, 3, 5, 2, -2, 0}},
                                             {'z', {1, 1, 0, 4, 0, 0}},
                                             {'-', {}}};

// The lists of a font. Of the library's own "32 +4" advances by 4, and "33 =32" calls that of 32.
Calls made(int base, unsigned int first, unsigned int count, const char* own) {
    Calls calls = {call("glGenLists", first + count),
                   call("glXUseXFont", 1, first, count, static_cast<unsigned int>(base) + first)};
    std::istringstream in(own);
    char kind = 0;
    for (int code = 0, number = 0; in >> code >> kind >> number;)
        calls = calls + Calls{call("glNewList", base + code, GL_COMPILE),
                              kind == '=' ? call("glCallList", base + number)
                                          : call("glBitmap", 0, 0, 0, 0, number, 0, "unread"),
                              "glEndList()"};
    return calls;
}

TEST_F(TextTest, noListLeavesThePenShortOfWhatIsMeasuredAndNoErrorIsLeft) {
    // The glyphs are row by row; a single one is that of all three codes.
    using Case = std::tuple<unsigned int, unsigned int, unsigned int, unsigned int, std::string,
                            const char*>;
    const Case cases[] = {{32, 0, 0, 33, "bi-fz", "32 +4 34 =33 35 +5 36 +0"},
                          {32, 0, 0, 0, "b-i", "32 +4"},
                          {255, 0, 0, 256, "-b", "255 =256 256 +4"},
                          {32, 0, 1, 33, "-i-bbb", "32 =33 34 =33"},
                          {32, 0, 1, 256 + 32, "-ibfii", "32 +5 34 +4"},
                          {32, 1, 2, 256 + 33, "ib-iii", "32 +4 33 +4 34 +4"},
                          {32, 0, 0, 33, "b", "32 +4 33 +4 34 +4"}};
    XFontStruct& font = server.fonts[kDefault];
    for (const auto& [first, firstRow, lastRow, substitute, glyphs, lists] : cases) {
        std::vector<XCharStruct> all;
        for (const char kind : glyphs)
            all.push_back(kGlyphs.at(kind));
        const bool isOne = glyphs.size() == 1;
        const auto count =
            isOne ? 3 : static_cast<unsigned int>(all.size()) / (lastRow - firstRow + 1);
        font.min_bounds = all[0];
        font.per_char = isOne ? nullptr : all.data();
        font.min_char_or_byte2 = first;
        font.max_char_or_byte2 = first + count - 1;
        font.min_byte1 = firstRow;
        font.max_byte1 = lastRow;
        font.default_char = substitute;
        newContext();
        gl.failNext("glXUseXFont", GL_OUT_OF_MEMORY);
        extent("");
        EXPECT_EQ(gl.takeCalls(), made(server.lists, first, count, lists)) << glyphs;
        EXPECT_TRUE(kyglErrorCheck("", "", 0, 0).ok()) << "an error of the font was left";
    }
    newContext();
    server.hasLists = false;
    extent("");
    EXPECT_EQ(gl.takeCalls(), made(0, 32, 3, "")) << "the application's lists were written over";
}

TEST_F(TextTest, sizesAreThoseOfTheBitmapFontsInOrder) {
    server.listed = {"fixed", "", "-a-b-c-d-e-f"};
    for (const char* rest :
         {"", "0-1", "14-1", "14-2", "9", "7", "[1_0_0_1]-1", "-10", "x6", "10x"})
        server.listed.push_back(std::string("-f-b-b-i-n--") + rest);
    using Sizes = std::array<int, 5>;
    const auto sizes = [](int most, bool bold) {
        Sizes all = {};
        all[4] = KyGLText::availablePointSizes(all.data(), most, "a b", bold, !bold);
        EXPECT_TRUE(server.names.empty()) << "names were not released";
        return all;
    };
    EXPECT_EQ(sizes(5, true), (Sizes{7, 9, 10, 14, 4}));
    EXPECT_EQ(sizes(2, false), (Sizes{7, 9, 0, 0, 2}));
    EXPECT_EQ(sizes(0, true), Sizes());
    EXPECT_EQ(server.takeAsked()[1], "-*-a b-medium-i-normal-*-*-*-*-*-*-*-*-*(100)");
    server.listed.clear();
    EXPECT_EQ(sizes(5, true), Sizes());
    EXPECT_EQ(server.takeAsked()[0], "-*-a b-bold-r-normal-*-*-*-*-*-*-*-*-*(100)");
}

// The first conversion is in the locale that needs the least room.
TEST_F(TextTest, aWideCharacterBecomesOneByteInEveryLocale) {
    for (const char* locale : {"C", "C.UTF-8"}) {
        ASSERT_NE(std::setlocale(LC_ALL, locale), nullptr);
        for (const std::size_t length : {2U, 5000U, 0U}) {
            const std::wstring wide = std::wstring(length, L'x') + L"\x20ac\n\x1f600y\xdfff\xe9";
            const std::string narrow = std::string(length, 'x') + "?\n?y??";
            EXPECT_EQ(extent(wide.c_str()), extent(narrow.c_str()));
            EXPECT_EQ(rendered(wide.c_str()), rendered(narrow.c_str()));
        }
    }
    EXPECT_FALSE(KyGLText::wcharSupported());
    std::setlocale(LC_ALL, "C");
}

TEST_F(TextTest, eachByteIsMeasuredOnceAndNoLineAllocates) {
    KyGLText::setBackground(0, 0, 0, 1);
    gl.takeCalls();
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "xxxxxxxxx\n";
    const auto render = [&] { KyGLText::render(0, 0, 0, text.c_str()); };
    extent(text.c_str());
    EXPECT_EQ(server.measured, 900000);
    gl.muted = true;
    const long before = Allocations::count;
    render();
    const long allocations = Allocations::count - before;
    EXPECT_LE(allocations, 6);
    EXPECT_EQ(server.measured, 1800000);
    gl.muted = false;
    for (long nth = allocations; nth > 0; --nth)
        EXPECT_TRUE(Allocations::stop(nth, false, render));
    EXPECT_EQ(gl.takeCalls(), Calls()) << "memory ran out after a GL call";
}

namespace {

// "context 7: error: " of this and that.
testing::AssertionResult isOne(const Calls& lines, unsigned int context,
                               const std::string& severity, const Calls& parts) {
    const std::string start = "context " + std::to_string(context) + ": " + severity + ": ";
    bool fits = lines.size() == 1 && lines[0].rfind(start, 0) == 0;
    for (const std::string& part : parts)
        fits = fits && lines[0].find(part) != std::string::npos;
    if (fits) return testing::AssertionSuccess();
    return testing::AssertionFailure() << testing::PrintToString(lines);
}

}  // namespace

TEST_F(TextTest, aFontThatIsNotTheOneAskedForIsReportedUntilItIs) {
    const std::string own = name("lu-cida", "medium-i", 14), none = name("none", "bold-r", -99);
    const auto setLucida = [] { KyGLText::setFont(14, false, true, "lu-cida"); };
    const auto setNone = [] { KyGLText::setFont(-99, true, false, "none"); };
    server.fonts.clear();
    server.add(name("*", "medium-i", 14));
    setLucida();
    EXPECT_EQ(server.takeAsked().back(), name("*", "medium-i", 14)) << "off, a name was asked for";
    const unsigned int id = newContext();
    Messages messages(KyDiagnostics::Text);
    KyGLText::setPixelOffset(0, 0);
    EXPECT_TRUE(isOne(messages.take(), id, "error",
                      {"the font 'helvetica' (12 pixels, bold), the default", "measures 0"}));
    setLucida();
    setLucida();
    EXPECT_TRUE(isOne(messages.take(), id, "warning",
                      {"the font 'lu-cida' (14 pixels, italic), so", "family, -got-1801;"}));
    EXPECT_EQ(server.atomNames, 0);
    setNone();
    EXPECT_TRUE(isOne(messages.take(), id, "error", {"'none' (-99 pixels, bold), and any"}));
    rendered("a");
    EXPECT_EQ(messages.take(), Calls()) << "the same again";
    KyGLText::cleanUp();
    extent("a");
    EXPECT_TRUE(isOne(messages.take(), id, "error", {"KyGLText::cleanUp left"}));
    server.add(none);
    setNone();
    EXPECT_TRUE(isOne(messages.take(), id, "note", {"'none'", "(2 times)"}));
    KyGLText::setDisplay(nullptr);
    const auto former = std::exchange(SoGLXEW::__glewXGetCurrentDisplay, nullptr);
    KyGLText::fontBase(27);
    SoGLXEW::__glewXGetCurrentDisplay = former;
    EXPECT_TRUE(isOne(messages.take(), id, "error", {"(27 pixels, bold) was", "setDisplay"}));
    EXPECT_TRUE(isOne(messages.end(), id, "note", {"'lu-cida'", "(2 times)"}));
}

TEST_F(TextTest, bytesThatAFontLacksAreReportedForEachSetOfThem) {
    extent("");
    const unsigned int id = kyglGetContext();
    Messages messages(KyDiagnostics::Text);
    server.add(name("capitals", "bold-r", 5), '[');
    KyGLText::setFont(5, true, false, "capitals");
    extent("A\\nB\n");
    EXPECT_EQ(messages.take(), Calls()) << "a break is no glyph";
    extent("\\A\\\\n");
    EXPECT_TRUE(isOne(messages.take(), id, "warning", {"'capitals'", ": 0x5C;"}));
    KyGLText::setFont(12, true, false, "helvetica");
    rendered("caf\xc3\xa9");
    EXPECT_TRUE(isOne(messages.take(), id, "warning", {"0xA9 0xC3;", "last code", "UTF-8"}));
    rendered("\xe9\r\x7f\xe9");
    EXPECT_TRUE(isOne(messages.take(), id, "warning", {": 0x0D 0x7F 0xE9;", "'\\r'"}));
    extent("\xc3\xa9\xc3");
    rendered("\xe9\r\x7f");
    EXPECT_EQ(messages.end().size(), 2U) << "one count for each set";
}

TEST_F(TextTest, aContextInWhichNoCharacterIsDrawnIsReportedUntilOneIs) {
    const unsigned int id = newContext();
    Messages messages;
    const auto render = [&] { return rendered("ab"), messages.take(); };
    server.current = 0;
    EXPECT_TRUE(isOne(render(), id, "error", {"no GLX context"}));
    EXPECT_EQ(render(), Calls());
    setenv("TWILAN_KYGLTEXT_NOGL", "1", 1);
    EXPECT_EQ(render()[1].find("context " + std::to_string(id) + ": warning: "), 0U);
    unsetenv("TWILAN_KYGLTEXT_NOGL");
    server.current = id;
    server.hasLists = false;
    EXPECT_TRUE(isOne(render(), id, "error", {"core profile"}));
    render();
    server.hasLists = true;
    EXPECT_TRUE(isOne(render(), id, "note", {"(2 times)"}));
}

TEST_F(TextTest, diagnosticsChangeNoCallAndAllocateNothingForTextThatIsAsAsked) {
    KyGLText::setBackground(0, 0, 0, 0.5f);
    const auto run = [&] {
        KyGLText::cleanUp();
        server.lists = 0;
        KyGLText::setFont(12, true, false, "helvetica");
        KyGLText::render(0, 0, 0, "a\nb~");
        extent("a");
        const Calls calls = gl.takeCalls();
        return calls + server.takeAsked();
    };
    const auto allocations = [&] {
        gl.muted = true;
        const long before = Allocations::count;
        KyGLText::render(0, 0, 0, "a\nb~");
        extent("a");
        gl.muted = false;
        return Allocations::count - before;
    };
    run();
    const Calls off = run();
    const long allocationsOff = allocations();
    const Messages messages(KyDiagnostics::Text);
    EXPECT_EQ(run(), off);
    EXPECT_EQ(allocations(), allocationsOff);
}

// The default font is loaded inside another operation.
TEST_F(TextTest, theHandlerMayWaitForAThreadThatDrawsText) {
    server.fonts.clear();
    KyDiagnostics::enable([](const auto& message, void*) {
        std::thread([&] {
            kyglSetContext(message.context);
            KyGLText::setFont(12, true, false, "helvetica");
        }).join();
    });
    KyGLText::setAlignment(0, 0);
    KyDiagnostics::disable();
    EXPECT_EQ(server.takeAsked(), (Calls{kDefault, name("*", "bold-r", 12)}));
}
