// Energy balance of the explicit run, summed node by node in update order.
//
// Over the half increments around t_n every force f_n of a node does the
// work f_n . (du_(n-1/2) + du_(n+1/2))/2, with du_(n+1/2) = dt v_(n+1/2) the
// displacement of the increment that starts at t_n (the velocity that moves
// the node, before a constraint overwrites it). The half that reaches
// forward is held back until the next increment, so each total at t_n is
// the trapezoidal sum over [0, t_n]:
//   W(t_n) = sum over k of (f_(k-1) + f_k)/2 . du_(k-1/2).
// The force families are
//   internal   -f_int . du     (strain energy; element internal forces and moments)
//   contact    -f_c . du       (penalty energy stored plus friction dissipated)
//   damping     m c v_(n-1/2) . du  (mass-proportional damping)
//   external    (f_ext + f_load + m a_load) . du   (pressures, nodal loads, load
//               accelerations such as gravity; J alpha for rotations)
//   prescribed  R . du, with R = m a - (all forces above), a = (v_(n+1/2) -
//               v_(n-1/2)) / dt_avg the acceleration the node actually had:
//               the work of the constraint reactions (nodes with a constraint)
// and the kinetic energy is that of the whole step, 1/2 m v_n^2 + 1/2 w_n J w_n,
// v_n the velocity at t_n between the two mid-step velocities. A rigid
// body's members are not integrated: their forces are carried to the
// reference node, whose work and kinetic energy count them once.
//
// Energy error = kinetic + internal + damping + contact - external -
// prescribed - initial kinetic. For a linear spring the internal term is
// exactly k u^2/2; on a stable run the error stays a boundary term of the
// order of the work of one increment, while an unstable mode makes the
// kinetic and internal energies grow together with nothing to balance them.
#pragma once

#include "Load.h"
#include "Node.h"

#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

class Archive;

class EnergyBalance {
public:
    struct Totals {
        double kinetic = 0.0;
        double internal = 0.0;
        double external = 0.0;
        double prescribed = 0.0;
        double contact = 0.0;
        double damping = 0.0;
        double initialKinetic = 0.0;
        // The part of the kinetic energy carried by nodes without a
        // constraint: what inertia does, apart from the prescribed motions.
        double freeKinetic = 0.0;
    };

    // One slot per node, in the order the loop updates them; the loads the
    // nodes carry are evaluated once per increment; without contact in the
    // model the contact forces are not read.
    void setUp(const std::vector<std::shared_ptr<Node>>& nodes,
               const std::vector<std::shared_ptr<Load>>& loads, bool contactInModel = true);
    // Before the node pass of an increment of step dt that starts at time t.
    void beginIncrement(double dt, double t);

    // The sums of one run of consecutive nodes in update order. The node
    // pass sums fixed runs of nodes on any thread and endIncrement adds the
    // runs in order, so the totals do not depend on the number of threads.
    struct Partial;
    // What one node's update needs kept from before it.
    struct Around {
        double before[6];
        double dampedVelocity[6];
    };
    // Around the update of node i (nodes[i] of setUp).
    void beforeUpdate(const Node& n, Around& around) const {
        const double* v = first ? n.velocities() : n.movingVelocity();
        const double* d = n.movingVelocity();
        for (int k = 0; k < 6; ++k) {
            around.before[k] = v[k];
            around.dampedVelocity[k] = d[k];
        }
    }
    void afterUpdate(const Node& n, std::size_t i, const Around& around, Partial& sums) const;
    // After the node pass: the runs' sums, in update order; the totals move
    // on to the start of the increment.
    void endIncrement(const Partial* runs, std::size_t runCount);
    // The state the loop carries from one increment to the next (Checkpoint.h).
    void checkpoint(Archive& archive);

    const Totals& totals() const { return sum; }
    // kinetic + internal + damping + contact - external - prescribed - initial kinetic
    double error() const;
    // The largest magnitude among the totals (the initial kinetic energy included).
    double largest() const;
    // The error in per cent of the largest; 0 while every total is 0.
    double errorPercent() const;
    long increments() const { return count; }

    // Per force family: work of the past half increments of this pass, and
    // of the half increments that reach forward (held back).
    struct Family {
        double past = 0.0, next = 0.0, held = 0.0;
        // f . vm and f . vp over n components, scaled by the half steps.
        void add(const double* f, const double* vm, const double* vp, int n, double halfBehind,
                 double halfAhead) {
            double a = 0.0, b = 0.0;
            for (int k = 0; k < n; ++k) {
                a += f[k] * vm[k];
                b += f[k] * vp[k];
            }
            past += halfBehind * a;
            next += halfAhead * b;
        }
        // Adds a run's sums of this pass.
        void gather(const Family& run) {
            past += run.past;
            next += run.next;
        }
        // Closes a pass: the total through the start of this increment.
        void close(double& total) {
            total += held + past;
            held = next;
            past = next = 0.0;
        }
    };
    struct Partial {
        Family internal, contact, damping, external, prescribed;
        double kinetic = 0.0, freeKinetic = 0.0;
        // The nodes' own running energies (the log's figures).
        double nodeInternal = 0.0, nodeKinetic = 0.0;
    };

private:
    std::vector<int> loadSlot; // per node: index in `loadList`, -1 without a load
    std::vector<Load*> loadList;
    std::vector<Load::Values> loadValues;
    double dt = 0.0, dtPrevious = 0.0;
    double perAverageStep = 0.0, weightBehind = 1.0, weightAhead = 0.0;
    double kinetic = 0.0, freeKinetic = 0.0;
    Family internal, contact, damping, external, prescribed;
    Totals sum;
    long count = 0;
    bool first = true;
    bool contactUsed = true;
};
