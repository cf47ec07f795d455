// Increments of the explicit loop allocate nothing on the heap: not for
// elements of any kind, constraints, nodal loads or pressures.
#include "AllocationCounter.h"
#include "Model.h"
#include "TestUtil.h"

#include <gtest/gtest.h>
#include <omp.h>

using namespace testutil;

namespace {

// Builds the model of a deck and returns the heap allocations per increment
// over `count` increments, after two to settle.
double allocationsPerIncrement(const std::string& name, const std::string& deckText, int count = 20,
                               bool clearDuringStep = true) {
    const fs::path dir = scratchDir(name);
    Model model(1, writeFile(dir / (name + ".txt"), deckText).string());
    model.initialize();
    model.assembleMassMatrix();
    model.setInitialConditions();
    double candidate = 90000.0;
    for (int i = 0; i < 2; ++i) {
        model.step(candidate, clearDuringStep);
        model.advanceTime(clearDuringStep);
    }
    const auto before = allocation::snapshot().allocations;
    for (int i = 0; i < count; ++i) {
        model.step(candidate, clearDuringStep);
        model.advanceTime(clearDuringStep);
    }
    return static_cast<double>(allocation::snapshot().allocations - before) / count;
}

const std::string head = "CONTROLS\nRUN FROM 0 TO 1\nSTEP 0\nPRINT EVERY 1\nAMPLITUDES TYPE TABULAR\n"
                         "RAMP VALUES 0 0 1 1\n";

// Four rods in a square, one corner held, the opposite corner pulled by a
// ramped velocity: the nodes carry constraints, no loads.
const std::string rodSquare =
    head +
    "CONSTRAINTS TYPE BOUNDARY_CONDITION\nHELD VX 0 VY 0 VZ 0\nPULL VX 1 VY 1 VZ 0 AMPLITUDE RAMP\n"
    "MATERIALS TYPE ELASTIC\nCORD E 2E9 NU 0.3 RHO 1200 DAMPING 1\nNODES\n1 X 0 Y 0 Z 0 CONSTRAINT HELD\n"
    "2 X 1 Y 0 Z 0\n3 X 1 Y 1 Z 0 CONSTRAINT PULL\n4 X 0 Y 1 Z 0\nELEMENTS TYPE ROD_2\n"
    "1 NODES 1 2 MATERIAL CORD D 0.01\n2 NODES 2 3 MATERIAL CORD D 0.01\n3 NODES 3 4 MATERIAL CORD D 0.01\n"
    "4 NODES 4 1 MATERIAL CORD D 0.01\n";

// Two triangles, one edge clamped: shells with one free corner loaded (a
// nodal load), or membranes of a given law with the other corner pulled and
// a pressure on both.
const std::string loadedShells =
    head +
    "LOADS\nTIP FZ -1 AMPLITUDE RAMP\nCONSTRAINTS TYPE BOUNDARY_CONDITION\nCLAMP VX 0 VY 0 VZ 0 VRX 0 VRY 0 "
    "VRZ 0\nMATERIALS TYPE ELASTIC\nSTEEL E 210000 NU 0.3 RHO 3E-8\nNODES\n1 X 0 Y 0 Z 0 CONSTRAINT CLAMP\n"
    "2 X 10 Y 0 Z 0 LOAD TIP\n3 X 10 Y 10 Z 0\n4 X 0 Y 10 Z 0 CONSTRAINT CLAMP\nELEMENTS TYPE S3L_C0\n"
    "1 NODES 1 2 3 MATERIAL STEEL T 1\n2 NODES 1 3 4 MATERIAL STEEL T 1 NIP 5\n";

std::string membranePair(const std::string& material) {
    return head +
           "LOADS\nBLOW P 0.01 AMPLITUDE RAMP\nCONSTRAINTS TYPE BOUNDARY_CONDITION\nCLAMP VX 0 VY 0 VZ 0\n" +
           "PULL VX 1 VY 0 VZ 0.5 AMPLITUDE RAMP\nMATERIALS TYPE " + material +
           "\nNODES\n1 X 0 Y 0 Z 0 CONSTRAINT CLAMP\n2 X 10 Y 0 Z 0 CONSTRAINT PULL\n3 X 10 Y 10 Z 0\n"
           "4 X 0 Y 10 Z 0 CONSTRAINT CLAMP\nELEMENTS TYPE MEMBRANE_3\n"
           "1 NODES 1 2 3 MATERIAL SHEET T 0.5 LOAD BLOW\n2 NODES 1 3 4 MATERIAL SHEET T 0.5 LOAD BLOW\n";
}

} // namespace

TEST(HotPathAllocation, IncrementsOfEveryElementKindAllocateNothing) {
    const std::pair<const char*, std::string> decks[] = {
        {"alloc_textile",
         membranePair("HYPERTEXTILE\nSHEET RHO 1E-9 KELONGWARP 100 10 KELONGWEFT 100 KSHEAR 0.1 "
                      "WARPORI 1 0 0 WEFTORI 0 1 0")},
        {"alloc_ogden", membranePair("HYPERELASTIC\nSHEET RHO 1E-9 TYPE OGDEN MU 0.4 0.01 ALPHA 2 -2")},
        {"alloc_elastic", membranePair("ELASTIC\nSHEET E 1000 NU 0.3 RHO 1E-9")},
        {"alloc_rods", rodSquare},
        {"alloc_shells", loadedShells},
        // Nodes pushed by a contact surface with friction, their stick forces carried.
        {"alloc_surface",
         membranePair("HYPERTEXTILE\nSHEET RHO 1E-9 KELONGWARP 100 10 KELONGWEFT 100 KSHEAR 0.1 "
                      "WARPORI 1 0 0 WEFTORI 0 1 0") +
             "CONTACT_SURFACES\nTOOL TYPE SHELL T 2 PENALTY 0.1 FRICTION 0.3\nNODES\n"
             "5 X -5 Y -5 Z -0.5 CONSTRAINT CLAMP\n6 X 20 Y -5 Z -0.5 CONSTRAINT CLAMP\n"
             "7 X 20 Y 20 Z -0.5 CONSTRAINT CLAMP\nELEMENTS TYPE CONTACT_FACET\n3 NODES 5 6 7 SURFACE "
             "TOOL\n"}};
    for (const auto& [name, deck] : decks) {
        SCOPED_TRACE(name);
        EXPECT_EQ(allocationsPerIncrement(name, deck), 0.0);
    }
    // Also when the forces are cleared in a pass of their own (steps that write results).
    EXPECT_EQ(allocationsPerIncrement("alloc_rods_late_clear", rodSquare, 20, false), 0.0);
}

TEST(HotPathAllocation, RigidBodyAllocatesNothing) {
    // A free tool turned by a moment and pressed onto a rod's end by a load:
    // gather, rotation update and placement, with contact.
    const std::string deck =
        head +
        "CONSTRAINTS TYPE BOUNDARY_CONDITION\nBASE VX 0 VY 0 VZ 0\nLOADS\nPRESS FZ -1 MZ 0.1 AMPLITUDE RAMP\n"
        "MATERIALS TYPE ELASTIC\nPOST E 1E5 NU 0.3 RHO 100\nRIGID_BODIES\nTOOL REFERENCE 6 NODES 3 TO 5 "
        "MASS 1 INERTIA 1 1 1\nNODES\n1 X 0 Y 0 Z 0\n2 X 0 Y 0 Z -1 CONSTRAINT BASE\n3 X 1 Y -1 Z 0.01\n"
        "4 X -1 Y -1 Z 0.01\n5 X 0 Y 1 Z 0.01\n6 X 0 Y 0 Z 1 LOAD PRESS\nELEMENTS TYPE ROD_2\n"
        "1 NODES 2 1 MATERIAL POST D 0.1\nELEMENTS TYPE CONTACT_TRIANGLE\n2 NODES 3 4 5 T 0.5 FACTOR 1E3 "
        "TYPE SOLID\n";
    EXPECT_EQ(allocationsPerIncrement("alloc_rigid", deck), 0.0);
    EXPECT_EQ(allocationsPerIncrement("alloc_rigid_late_clear", deck, 20, false), 0.0);
}

TEST(HotPathAllocation, ParallelPassesAllocateNothingOnceTheirLogsHaveGrown) {
    // 2178 fabric triangles (enough for the element pass to share its blocks
    // among threads) pulled over a contact surface with friction, on two
    // threads: logs of shared nodes, the surface's offers per block.
    const int n = 33, row = n + 1;
    std::string deck = head +
                       "CONSTRAINTS TYPE BOUNDARY_CONDITION\nCLAMP VX 0 VY 0 VZ 0\nPULL VX 1 VY 0 VZ 0 "
                       "AMPLITUDE RAMP\nMATERIALS TYPE HYPERTEXTILE\nSHEET RHO 1E-9 KELONGWARP 100 10 "
                       "KELONGWEFT 100 KSHEAR 0.1 WARPORI 1 0 0 WEFTORI 0 1 0\nCONTACT_SURFACES\nTOOL TYPE "
                       "SHELL T 2 PENALTY 0.1 FRICTION 0.3\nNODES\n";
    for (int j = 0; j < row; ++j)
        for (int i = 0; i < row; ++i)
            deck += std::to_string(j * row + i + 1) + " X " + std::to_string(i) + " Y " + std::to_string(j) +
                    " Z 0" +
                    (i == 0   ? " CONSTRAINT CLAMP"
                     : i == n ? " CONSTRAINT PULL"
                              : "") +
                    "\n";
    const int tool = row * row;
    deck += std::to_string(tool + 1) + " X -1 Y -1 Z -0.5 CONSTRAINT CLAMP\n" + std::to_string(tool + 2) +
            " X 40 Y -1 Z -0.5 CONSTRAINT CLAMP\n" + std::to_string(tool + 3) +
            " X 40 Y 40 Z -0.5 CONSTRAINT CLAMP\nELEMENTS TYPE MEMBRANE_3\n";
    int e = 0;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const int a = j * row + i + 1, b = a + 1, c = a + row + 1, d = a + row;
            deck += std::to_string(++e) + " NODES " + std::to_string(a) + " " + std::to_string(b) + " " +
                    std::to_string(c) + " MATERIAL SHEET T 0.5\n";
            deck += std::to_string(++e) + " NODES " + std::to_string(a) + " " + std::to_string(c) + " " +
                    std::to_string(d) + " MATERIAL SHEET T 0.5\n";
        }
    deck += "ELEMENTS TYPE CONTACT_FACET\n" + std::to_string(++e) + " NODES " + std::to_string(tool + 1) +
            " " + std::to_string(tool + 2) + " " + std::to_string(tool + 3) + " SURFACE TOOL\n";
    const int threads = omp_get_max_threads();
    omp_set_num_threads(2);
    EXPECT_EQ(allocationsPerIncrement("alloc_parallel", deck), 0.0);
    omp_set_num_threads(threads);
}
