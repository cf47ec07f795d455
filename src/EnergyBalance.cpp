#include "EnergyBalance.h"

#include "Checkpoint.h"

#include <algorithm>

void EnergyBalance::setUp(const std::vector<std::shared_ptr<Node>>& nodes,
                          const std::vector<std::shared_ptr<Load>>& loads, bool contactInModel) {
    contactUsed = contactInModel;
    loadList.clear();
    for (const auto& l : loads)
        loadList.push_back(l.get());
    loadValues.assign(loadList.size(), Load::Values{});
    loadSlot.assign(nodes.size(), -1);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const Load* l = nodes[i]->loadPointer();
        if (!l) continue;
        const auto found = std::find(loadList.begin(), loadList.end(), l);
        if (found != loadList.end()) loadSlot[i] = static_cast<int>(found - loadList.begin());
    }
    sum = Totals{};
    internal = contact = damping = external = prescribed = Family{};
    dt = dtPrevious = kinetic = 0.0;
    count = 0;
    first = true;
}

void EnergyBalance::beginIncrement(double step, double t) {
    dtPrevious = count == 0 ? 0.0 : dt;
    dt = step;
    first = count == 0;
    // Computed once: the update of every node needs them.
    perAverageStep = 2.0 / (dtPrevious + dt);
    weightBehind = dt / (dtPrevious + dt);
    weightAhead = dtPrevious / (dtPrevious + dt);
    kinetic = freeKinetic = 0.0;
    // The nodes evaluate their loads at the same time t; a tabular amplitude
    // answers the same time with the same value however often it is asked.
    for (std::size_t k = 0; k < loadList.size(); ++k)
        loadValues[k] = loadList[k]->at(t);
}

void EnergyBalance::afterUpdate(const Node& n, std::size_t i, const Around& around, Partial& sums) const {
    const double* vm = around.before;
    const double* vp = n.movingVelocity();
    const double* J = n.inertia();
    const double m = n.getMass();
    // Half of the displacements of the increments behind and ahead, with the
    // sign of the energy a family's force takes up (resisting forces absorb).
    const double hm = 0.5 * dtPrevious, hp = 0.5 * dt;
    sums.internal.add(n.internalForces(), vm, vp, 6, -hm, -hp);
    if (contactUsed) sums.contact.add(n.contactForces(), vm, vp, 6, -hm, -hp);

    // The applied forces: pressures, the load's forces and accelerations.
    double applied[6];
    const double* fe = n.externalForces();
    for (int k = 0; k < 6; ++k)
        applied[k] = fe[k];
    const int slot = i < loadSlot.size() ? loadSlot[i] : -1;
    if (slot >= 0) {
        const Load::Values& l = loadValues[static_cast<std::size_t>(slot)];
        const double* a = l.acceleration.data();
        for (int k = 0; k < 3; ++k)
            applied[k] += l.force[k] + m * a[k];
        for (int r = 0; r < 3; ++r)
            applied[3 + r] += l.force[3 + r] + J[3 * r] * a[3] + J[3 * r + 1] * a[4] + J[3 * r + 2] * a[5];
    }
    sums.external.add(applied, vm, vp, 6, hm, hp);

    const double c = n.getRayleighDamping();
    double dampingForce[3] = {0.0, 0.0, 0.0};
    if (c != 0.0) {
        for (int k = 0; k < 3; ++k)
            dampingForce[k] = m * c * around.dampedVelocity[k];
        sums.damping.add(dampingForce, vm, vp, 3, hm, hp);
    }

    // The velocity at t_n, between the mid-step velocities around it.
    const double wm = weightBehind, wp = weightAhead;
    double v[6];
    for (int k = 0; k < 6; ++k)
        v[k] = wm * vm[k] + wp * vp[k];

    if (n.hasConstraint()) {
        // What the node did beyond the forces: the constraint's reaction R,
        // summed as it is formed (no array of it to store and read back).
        static const double none[6] = {0.0, 0.0, 0.0, 0.0, 0.0, 0.0};
        const double* F = n.allForces(); // internal, external, contact and the load's forces
        const double* a = slot >= 0 ? loadValues[static_cast<std::size_t>(slot)].acceleration.data() : none;
        double behind = 0.0, ahead = 0.0;
        for (int k = 0; k < 3; ++k) {
            const double R = m * (vp[k] - vm[k]) * perAverageStep - (F[k] - dampingForce[k] + m * a[k]);
            behind += R * vm[k];
            ahead += R * vp[k];
        }
        const double dw0 = vp[3] - vm[3], dw1 = vp[4] - vm[4], dw2 = vp[5] - vm[5];
        for (int r = 0; r < 3; ++r) {
            const double* Jr = J + 3 * r;
            const double R = (Jr[0] * dw0 + Jr[1] * dw1 + Jr[2] * dw2) * perAverageStep -
                             (F[3 + r] + Jr[0] * a[3] + Jr[1] * a[4] + Jr[2] * a[5]);
            behind += R * vm[3 + r];
            ahead += R * vp[3 + r];
        }
        sums.prescribed.past += hm * behind;
        sums.prescribed.next += hp * ahead;
    }

    double spin = 0.0;
    for (int r = 0; r < 3; ++r)
        spin += v[3 + r] * (J[3 * r] * v[3] + J[3 * r + 1] * v[4] + J[3 * r + 2] * v[5]);
    const double nodeKinetic = 0.5 * m * (v[0] * v[0] + v[1] * v[1] + v[2] * v[2]) + 0.5 * spin;
    sums.kinetic += nodeKinetic;
    if (!n.hasConstraint()) sums.freeKinetic += nodeKinetic;
}

void EnergyBalance::endIncrement(const Partial* runs, std::size_t runCount) {
    for (std::size_t r = 0; r < runCount; ++r) {
        const Partial& run = runs[r];
        internal.gather(run.internal);
        contact.gather(run.contact);
        damping.gather(run.damping);
        external.gather(run.external);
        prescribed.gather(run.prescribed);
        kinetic += run.kinetic;
        freeKinetic += run.freeKinetic;
    }
    internal.close(sum.internal);
    contact.close(sum.contact);
    damping.close(sum.damping);
    external.close(sum.external);
    prescribed.close(sum.prescribed);
    sum.kinetic = kinetic;
    sum.freeKinetic = freeKinetic;
    if (first) sum.initialKinetic = kinetic;
    ++count;
}

double EnergyBalance::error() const {
    return sum.kinetic + sum.internal + sum.damping + sum.contact - sum.external - sum.prescribed -
           sum.initialKinetic;
}

double EnergyBalance::largest() const {
    const double all[7] = {sum.kinetic, sum.internal, sum.external,      sum.prescribed,
                           sum.contact, sum.damping,  sum.initialKinetic};
    double m = 0.0;
    for (double e : all)
        m = std::max(m, std::fabs(e));
    return m;
}

double EnergyBalance::errorPercent() const {
    const double reference = largest();
    return reference > 0.0 ? 100.0 * error() / reference : 0.0;
}

void EnergyBalance::checkpoint(Archive& archive) {
    // The loads and the nodes' load slots follow from the deck.
    archive.section("load values", loadValues.size());
    archive.vector(loadValues);
    archive.pod(dt);
    archive.pod(dtPrevious);
    archive.pod(perAverageStep);
    archive.pod(weightBehind);
    archive.pod(weightAhead);
    archive.pod(kinetic);
    archive.pod(freeKinetic);
    for (Family* f : {&internal, &contact, &damping, &external, &prescribed}) {
        archive.pod(f->past);
        archive.pod(f->next);
        archive.pod(f->held);
    }
    archive.pod(sum);
    archive.pod(count);
    archive.pod(first);
}
