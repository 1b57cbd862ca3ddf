#include "KyShaderUniformDiagnosis.h"

#include "kyglCheck.h"
#include "KyShaderBuildDelivery.h"
#include "KyShaderDeclarations.h"
#include "KyShaderKnownOrigins.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

using Severity = KyDiagnostics::Severity;

constexpr char kSource[] = "internal/KyShaderUniformDiagnosis";

struct TypeName {
    GLenum type;
    const char* name;
};
constexpr TypeName kTypes[] = {
    {GL_FLOAT, "float"},     {GL_FLOAT_VEC2, "vec2"}, {GL_FLOAT_VEC3, "vec3"},
    {GL_FLOAT_VEC4, "vec4"}, {GL_INT, "int"},         {GL_INT_VEC2, "ivec2"},
    {GL_INT_VEC3, "ivec3"},  {GL_INT_VEC4, "ivec4"},  {GL_UNSIGNED_INT, "uint"},
    {GL_BOOL, "bool"},       {GL_BOOL_VEC2, "bvec2"}, {GL_BOOL_VEC3, "bvec3"},
    {GL_BOOL_VEC4, "bvec4"}, {GL_FLOAT_MAT2, "mat2"}, {GL_FLOAT_MAT3, "mat3"},
    {GL_FLOAT_MAT4, "mat4"},
};

// Every other type is that of a texture or image unit, or a double.
const char* nameOf(GLenum type) {
    const auto* const found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                           [=](const TypeName& each) { return each.type == type; });
    return found != std::end(kTypes) ? found->name : "another type";
}

// A sampler or an image takes the number of its unit, which is an int.
bool isUnit(GLenum type) {
    constexpr GLenum kRanges[][2] = {
        {GL_SAMPLER_1D, GL_SAMPLER_2D_RECT_SHADOW},
        {GL_SAMPLER_1D_ARRAY, GL_SAMPLER_CUBE_SHADOW},
        {GL_INT_SAMPLER_1D, GL_UNSIGNED_INT_SAMPLER_BUFFER},
        {GL_SAMPLER_CUBE_MAP_ARRAY, GL_UNSIGNED_INT_SAMPLER_CUBE_MAP_ARRAY},
        {GL_SAMPLER_2D_MULTISAMPLE, GL_UNSIGNED_INT_SAMPLER_2D_MULTISAMPLE_ARRAY},
        {GL_IMAGE_1D, GL_UNSIGNED_INT_IMAGE_2D_MULTISAMPLE_ARRAY},
    };
    return std::any_of(std::begin(kRanges), std::end(kRanges), [=](const GLenum(&range)[2]) {
        return type >= range[0] && type <= range[1];
    });
}

std::string inQuotes(const std::string& name) {
    return "'" + name + "'";
}

std::string withoutIndex(const std::string& name) {
    const bool hasIndex = !name.empty() && name.back() == ']';
    return hasIndex ? name.substr(0, name.rfind('[')) : name;
}

// How many letters to change, add or take out to make one of the other.
std::size_t distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t i = 0; i < row.size(); ++i)
        row[i] = i;
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

void KyShaderUniformDiagnosis::run() {
    if (!askForActive()) return;
    KyDiagnosis::setForgetBuilds(kyForgetBuilds);
    for (long i = 0; i < mUniforms.mUniforms.size; ++i)
        judge(*mUniforms.mUniforms[i]);
}

bool KyShaderUniformDiagnosis::askForActive() {
    constexpr GLint kMost = 65536;
    GLint count = 0;
    GLint room = 0;
    glGetProgramiv(mProgram, GL_ACTIVE_UNIFORMS, &count);
    glGetProgramiv(mProgram, GL_ACTIVE_UNIFORM_MAX_LENGTH, &room);
    std::string name(static_cast<std::size_t>(std::clamp(room, 1, kMost)), '\0');
    for (GLuint i = 0; i < static_cast<GLuint>(std::clamp(count, 0, kMost)); ++i) {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(mProgram, i, static_cast<GLsizei>(name.size()), &length, &size, &type,
                           name.data());
        mActive.push_back({withoutIndex(name.substr(0, name.find('\0'))), type});
    }
    return KYGL_CHECK_GROUP(0).ok();
}

void KyShaderUniformDiagnosis::judge(const KyShaderUniform& uniform) const {
    using Type = KyShaderUniform::Type;
    const std::string name = uniform.name().dataPtr();
    const auto found = std::find_if(mActive.begin(), mActive.end(), [&](const Active& each) {
        return each.name == withoutIndex(name);
    });
    if (found == mActive.end()) return reportMissing(name);
    const GLenum type = found->type;
    const bool isFloat = uniform.mType == Type::Float && type == GL_FLOAT;
    const bool isInt = uniform.mType == Type::Int && (type == GL_INT || isUnit(type));
    if (type != GL_BOOL && !isFloat && !isInt && uniform.mType != Type::Other)
        reportType(uniform, type);
}

void KyShaderUniformDiagnosis::reportMissing(const std::string& name) const {
    const KyShaderPlace place = declaration(name);
    if (place.isKnown())
        report(name, {Severity::Note,
                      "uniform " + inQuotes(name) +
                          " is declared here, but the program does not use it: what is set for it "
                          "goes nowhere",
                      place.file, place.line});
    else
        report(name, {Severity::Warning, "the program of " + std::string(mVertex.file.dataPtr()) +
                                             " and " + mFragment.file.dataPtr() +
                                             " has no uniform " + inQuotes(name) + advice(name)});
}

// The nearest name if one is near, or else what there is.
std::string KyShaderUniformDiagnosis::advice(const std::string& name) const {
    const auto byDistance = [&](const Active& a, const Active& b) {
        return distance(name, a.name) < distance(name, b.name);
    };
    const auto nearest = std::min_element(mActive.begin(), mActive.end(), byDistance);
    if (nearest == mActive.end()) return "; it has none at all";
    const std::size_t changes = distance(name, nearest->name);
    if (changes <= std::max<std::size_t>(name.size() / 3, 1) && changes < name.size())
        return "; did you mean " + inQuotes(nearest->name) + "?";
    constexpr std::size_t kMostNames = 8;
    std::string names;
    for (std::size_t i = 0; i < std::min(mActive.size(), kMostNames); ++i)
        names += (i > 0 ? ", " : "") + mActive[i].name;
    return "; it has " + names + (mActive.size() > kMostNames ? ", ..." : "");
}

void KyShaderUniformDiagnosis::reportType(const KyShaderUniform& uniform,
                                          unsigned int declared) const {
    const std::string name = uniform.name().dataPtr();
    const bool isInt = uniform.mType == KyShaderUniform::Type::Int;
    const bool isScalar = declared == GL_FLOAT || declared == GL_INT || isUnit(declared);
    const KyShaderPlace place = declaration(name);
    std::string text = "uniform " + inQuotes(name) + " is kept as " + (isInt ? "int" : "float") +
                       ", the type of its first value, but it is declared as " +
                       (isUnit(declared) ? "a sampler or an image" : nameOf(declared)) +
                       ": the GL refuses it with GL_INVALID_OPERATION; ";
    if (isScalar)
        text += std::string("set it with ") +
                (declared == GL_FLOAT ? "a float, such as 2.0F," : "an int, such as 2,") +
                " from the first time on";
    else
        text += "the library keeps floats and ints alone, so send it by a call of the GL's";
    if (!place.isKnown())
        text += "; the program is that of " + std::string(mVertex.file.dataPtr()) + " and " +
                mFragment.file.dataPtr();
    report(name, {Severity::Error, text, place.file, place.line});
}

void KyShaderUniformDiagnosis::report(const std::string& name, KyFinding::Message&& message) const {
    const std::string context = "context " + std::to_string(mContext);
    const std::string circumstances = kyCircumstances(context, &mVertex, &mFragment);
    message.text +=
        message.file.empty() ? kyCircumstances("", &mVertex, &mFragment) : circumstances;
    KyDiagnosis::report(KyDiagnostics::Uniform, [&] {
        return KyFinding{"uniform|" + std::string(mVertex.path.dataPtr()) + "|" +
                             mFragment.path.dataPtr() + circumstances + "|" + name,
                         {std::move(message)},
                         mContext};
    });
}

// In the fragment shader or the vertex shader, as its text is.
KyShaderPlace KyShaderUniformDiagnosis::declaration(const std::string& name) const {
    const std::string declared = name.substr(0, name.find_first_of(".["));
    for (const KyShaderBuildStage* const stage : {&mFragment, &mVertex}) {
        const std::size_t found = kyFindDeclaration(stage->source.dataPtr(), declared);
        if (found == std::string_view::npos) continue;
        const KyShaderKnownOrigins origins(stage->path, stage->source);
        if (origins.get() != nullptr) return origins.get()->placeOfByte(found);
    }
    return {};
}
