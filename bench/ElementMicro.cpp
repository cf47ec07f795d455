// One element's strain-stress-force pass per element type, and the 2D stress
// laws on their own.
#include "MicroFixtures.h"

#include <cmath>

using micro::Mesh;

namespace {

const char* const textile =
    "RHO 1E-9 KELONGWARP 100 10 KELONGWEFT 100 10 KSHEAR 0.1 0.01 WARPORI 1 0 0 WEFTORI 0 1 0";
const char* const ogden = "RHO 1E-9 TYPE OGDEN MU 0.4 0.01 ALPHA 2.0 -2.0";

// A zigzag chain of rods, each slightly stretched so that it carries stress.
Mesh rodChain(int count) {
    Mesh mesh;
    mesh.materials.push_back(micro::material("ELASTIC", "CORD", "E 2.0E9 NU 0.3 RHO 1200"));
    for (int i = 0; i <= count; ++i)
        mesh.addNode(0.01 * i, (i % 2) * 0.004, 0.0);
    for (int i = 1; i <= count; ++i)
        mesh.addElement("ROD_2", "NODES " + std::to_string(i) + " " + std::to_string(i + 1) +
                                     " MATERIAL CORD D 0.002");
    mesh.start();
    for (auto& n : mesh.nodes)
        n->setX_pos(n->getX_pos() * 1.001);
    return mesh;
}

void BM_Rod2Pass(benchmark::State& state) {
    Mesh mesh = rodChain(static_cast<int>(state.range(0)));
    double candidate = 1.0;
    micro::PerItem perElement(state, mesh.elements.size());
    for (auto _ : state) {
        micro::elementPass(mesh.elements, 1e-6, candidate);
        benchmark::DoNotOptimize(candidate);
    }
}
BENCHMARK(BM_Rod2Pass)->Arg(4096)->Arg(65536);

void stressLaw(benchmark::State& state, std::shared_ptr<Material> shared) {
    const double basis[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    auto m = shared->copyMat();
    m->setInitialConditions(basis);
    // In-plane deformation gradient with stretch and shear.
    const double F[2][2] = {{1.05, 0.03}, {-0.01, 0.97}};
    double strain[6] = {}, stress[6] = {};
    micro::PerItem perCall(state, 1);
    for (auto _ : state) {
        strain[0] = 1e-6;
        m->computeStress2D(F, strain, stress, basis);
        benchmark::DoNotOptimize(stress[0]);
    }
}

void BM_ElasticStress2D(benchmark::State& state) {
    stressLaw(state, micro::material("ELASTIC", "STEEL", "E 2.1E5 NU 0.3 RHO 7.8E-9"));
}
BENCHMARK(BM_ElasticStress2D);

void BM_OgdenStress2D(benchmark::State& state) {
    stressLaw(state,
              micro::material("HYPERELASTIC", "RUBBER", "RHO 1E-9 TYPE OGDEN MU 0.4 0.01 ALPHA 2.0 -2.0"));
}
BENCHMARK(BM_OgdenStress2D);

void BM_TextileStress2D(benchmark::State& state) {
    stressLaw(state, micro::material("HYPERTEXTILE", "FABRIC", textile));
}
BENCHMARK(BM_TextileStress2D);

} // namespace

namespace {

// A square plate of d x d cells, two triangles per cell, slightly stretched
// and given a velocity field so that strains and curvatures change.
Mesh triangleSheet(int d, const std::string& type, const std::string& materialType,
                   const std::string& materialParams, const std::string& extra) {
    Mesh mesh;
    mesh.materials.push_back(micro::material(materialType, "SHEET", materialParams));
    for (int j = 0; j <= d; ++j)
        for (int i = 0; i <= d; ++i)
            mesh.addNode(1.0 * i, 1.0 * j, 0.0);
    auto node = [d](int i, int j) { return std::to_string(j * (d + 1) + i + 1); };
    for (int j = 0; j < d; ++j)
        for (int i = 0; i < d; ++i) {
            mesh.addElement(type, "NODES " + node(i, j) + " " + node(i + 1, j) + " " + node(i + 1, j + 1) +
                                      " MATERIAL SHEET T 0.5 " + extra);
            mesh.addElement(type, "NODES " + node(i, j) + " " + node(i + 1, j + 1) + " " + node(i, j + 1) +
                                      " MATERIAL SHEET T 0.5 " + extra);
        }
    mesh.start();
    for (auto& n : mesh.nodes) {
        n->setX_pos(n->getX_pos() * 1.01);
        n->setZ_vel(0.01 * n->getX_pos());
        n->setX_rot_vel(0.001);
    }
    return mesh;
}

void sheetPass(benchmark::State& state, const std::string& type, const std::string& materialType,
               const std::string& materialParams, const std::string& extra) {
    Mesh mesh;
    try {
        mesh = triangleSheet(static_cast<int>(state.range(0)), type, materialType, materialParams, extra);
    } catch (const std::exception& e) {
        // An element type that this build does not have yet.
        state.SkipWithError(e.what());
        return;
    }
    double candidate = 1.0;
    micro::PerItem perElement(state, mesh.elements.size());
    for (auto _ : state) {
        micro::elementPass(mesh.elements, 1e-7, candidate);
        benchmark::DoNotOptimize(candidate);
    }
}

// Sheets of 2 d^2 triangles: d = 45 gives about 4000, d = 181 about 65000.
void BM_Membrane3TextilePass(benchmark::State& state) {
    sheetPass(state, "MEMBRANE_3", "HYPERTEXTILE", textile, "");
}
BENCHMARK(BM_Membrane3TextilePass)->Arg(45)->Arg(181);

void BM_Membrane3OgdenPass(benchmark::State& state) {
    sheetPass(state, "MEMBRANE_3", "HYPERELASTIC", ogden, "");
}
BENCHMARK(BM_Membrane3OgdenPass)->Arg(45)->Arg(181);

void BM_S3L_C0Pass3Points(benchmark::State& state) {
    sheetPass(state, "S3L_C0", "ELASTIC", "E 2.1E5 NU 0.3 RHO 7.8E-9", "NIP 3");
}
BENCHMARK(BM_S3L_C0Pass3Points)->Arg(45)->Arg(181);

} // namespace

namespace {

// The fabric shell on the membrane's textile law, with bending stiffnesses
// that stay below its tensile ones as a real fabric's do.
void BM_Fabric3Pass(benchmark::State& state) {
    sheetPass(state, "FABRIC_3", "HYPERTEXTILE", std::string(textile) + " BENDING 0.02 0.01", "");
}
BENCHMARK(BM_Fabric3Pass)->Arg(45)->Arg(181);

} // namespace
