// The node update of the explicit loop: central difference with Euler's
// equations for the rotations, then the force accumulators cleared.
#include "MicroFixtures.h"

#include "Amplitude.h"
#include "AmplitudeLibrary.h"
#include "Constraint.h"
#include "ConstraintLibrary.h"

using micro::Mesh;

namespace {

enum class Attached { nothing, constraint, load };

void nodeUpdate(benchmark::State& state, Attached attached) {
    const int count = static_cast<int>(state.range(0));
    std::vector<std::shared_ptr<Amplitude>> amplitudes;
    auto ramp = AmplitudeLibrary::getAmplitudeOstrel("TABULAR");
    std::string rampName = "RAMP";
    ramp->setName(rampName);
    ramp->parseOstrel(micro::tokens("VALUES 0 0 1 1"));
    ramp->setInitialConditions();
    amplitudes.push_back(ramp);
    auto constraint = ConstraintLibrary::getConstraintOstrel("BOUNDARY_CONDITION");
    std::string constraintName = "PULL";
    constraint->setName(constraintName);
    constraint->parseOstrel(micro::tokens("VX 1 VY 0 AMPLITUDE RAMP"), amplitudes);
    auto load = std::make_shared<Load>();
    std::string loadName = "GRAVITY";
    load->setName(loadName);
    load->parseOstrel(micro::tokens("AZ -9.81 AMPLITUDE RAMP"), amplitudes);

    Mesh mesh;
    TNT::Array2D<double> inertia(3, 3, 0.0);
    inertia[0][0] = inertia[1][1] = inertia[2][2] = 1e-6;
    for (int i = 0; i < count; ++i) {
        mesh.addNode(0.01 * i, 0.0, 0.0);
        Node& n = *mesh.nodes.back();
        n.addMass(1e-3);
        n.addInertia(inertia);
        n.setRayleighDamping(0.5);
        if (attached == Attached::constraint) n.setConstraint(constraint);
        if (attached == Attached::load) n.setLoad(load);
        n.determineMassMatrix();
        n.setInitialConditions();
    }
    double t = 0.0;
    double energy = 0.0;
    micro::PerItem perNode(state, mesh.nodes.size());
    for (auto _ : state) {
        // As in the loop, the forces arrive in a pass of their own before
        // the nodes are updated (also counted here, it is the cheaper part).
        for (auto& node : mesh.nodes) {
            node->addInternalForce(1e-6, -2e-6, 3e-6);
            node->addInternalMoment(1e-9, 0.0, -1e-9);
        }
        for (auto& node : mesh.nodes) {
            Node& n = *node;
            n.computeNewPosition(1e-6, t);
            energy += n.getInternalEnergy() + n.getKineticEnergy();
            n.clearNodalForces();
        }
        t = t < 0.5 ? t + 1e-6 : 0.0;
    }
    benchmark::DoNotOptimize(energy);
}

void BM_NodeUpdate(benchmark::State& state) {
    nodeUpdate(state, Attached::nothing);
}
void BM_NodeUpdateWithConstraint(benchmark::State& state) {
    nodeUpdate(state, Attached::constraint);
}
// A load's forces and accelerations, returned by value each update.
void BM_NodeUpdateWithLoad(benchmark::State& state) {
    nodeUpdate(state, Attached::load);
}
BENCHMARK(BM_NodeUpdate)->Arg(4096)->Arg(65536);
BENCHMARK(BM_NodeUpdateWithConstraint)->Arg(4096);
BENCHMARK(BM_NodeUpdateWithLoad)->Arg(4096);

} // namespace
