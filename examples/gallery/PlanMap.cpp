#define GL_GLEXT_PROTOTYPES
#include "PlanMap.h"

#include <kygl/kyglShaderARB.h>

#include <iterator>
#include <stdexcept>

#include <GL/gl.h>
#include <GL/glext.h>

namespace {

constexpr char kVertexText[] = R"(!!ARBvp1.0
PARAM map = program.local[0];     # ground to frame: factors for x and y, then what is added
PARAM table = program.local[1];   # height to colour table: factor and what is added
PARAM stretch = program.local[2]; # of the slopes
PARAM cut = program.local[3];     # where the plane looks to, and how far out it is
ATTRIB ground = vertex.position;
TEMP out;
MOV result.position, {0, 0, 0, 1};
MAD result.position.xy, ground, map.xyxy, map.zwzw;
MAD result.texcoord[0], ground.z, table.x, table.y;
MUL result.texcoord[1], vertex.normal, stretch;
DP3 out.x, ground, cut;
SUB result.texcoord[2], out.x, cut.w;
END
)";

constexpr char kFragmentText[] = R"(!!ARBfp1.0
PARAM sun = program.local[0];     # where it stands
PARAM paper = {0.97, 0.97, 0.96, 1};
ATTRIB out = fragment.texcoord[2];
TEMP colour, normal, pale;
TEX colour, fragment.texcoord[0], texture[0], 1D;
DP3 normal.w, fragment.texcoord[1], fragment.texcoord[1];
RSQ normal.w, normal.w;
MUL normal.xyz, fragment.texcoord[1], normal.w;
DP3_SAT normal.w, normal, sun;
MAD normal.w, normal.w, 0.7, 0.5;
MUL colour, colour, normal.w;
LRP pale, 0.65, paper, colour;
CMP result.color, out.x, colour, pale;
END
)";

}  // namespace

PlanMap::PlanMap(const TerrainMesh& mesh) : mMesh(mesh) {
    if (!kyglShaderARBAvailable())
        throw std::runtime_error("this OpenGL has no ARB assembly programs");
    const KyResult result =
        kyglShaderARBPrepareProgram(kVertexText, kFragmentText, &mVertexProgram, &mFragmentProgram);
    if (result.failed()) throw std::runtime_error("ARB assembly programs cannot be loaded");
}

PlanMap::~PlanMap() {
    glDeleteProgramsARB(1, &mVertexProgram);
    glDeleteProgramsARB(1, &mFragmentProgram);
}

void PlanMap::draw(const Opening& opening, const Cut& cut) const {
    const float range = mMesh.colourTop - mMesh.lowest;
    const float parameters[][4] = {
        {opening.halfWidth / mMesh.halfX, opening.halfHeight / mMesh.halfY, opening.x, opening.y},
        {1 / range, -mMesh.lowest / range, 0, 0},
        {mMesh.exaggeration, mMesh.exaggeration, 1, 0},
        {cut.x, cut.y, 0, cut.offset}};
    glBindProgramARB(GL_VERTEX_PROGRAM_ARB, mVertexProgram);
    for (unsigned int i = 0; i < std::size(parameters); ++i)
        glProgramLocalParameter4fvARB(GL_VERTEX_PROGRAM_ARB, i, parameters[i]);
    glBindProgramARB(GL_FRAGMENT_PROGRAM_ARB, mFragmentProgram);
    glProgramLocalParameter4fARB(GL_FRAGMENT_PROGRAM_ARB, 0, kSun[0], kSun[1], kSun[2], 0);
    glEnable(GL_VERTEX_PROGRAM_ARB);
    glEnable(GL_FRAGMENT_PROGRAM_ARB);
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(mMesh.surface.size()), GL_UNSIGNED_INT,
                   nullptr);
    glDisable(GL_FRAGMENT_PROGRAM_ARB);
    glDisable(GL_VERTEX_PROGRAM_ARB);
}
