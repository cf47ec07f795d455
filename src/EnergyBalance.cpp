#include "EnergyBalance.h"

#include <algorithm>

void EnergyBalance::setUp(const std::vector<std::shared_ptr<Node>>& nodes,
                          const std::vector<std::shared_ptr<Load>>& loads) {
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
    kinetic = freeKinetic = 0.0;
    // The nodes evaluate their loads at the same time t; a tabular amplitude
    // answers the same time with the same value however often it is asked.
    for (std::size_t k = 0; k < loadList.size(); ++k)
        loadValues[k] = loadList[k]->at(t);
}

void EnergyBalance::afterUpdate(const Node& n, std::size_t i) {
    const double* vm = before;
    const double* vp = n.movingVelocity();
    const double* J = n.inertia();
    const double m = n.getMass();
    double hm[6], hp[6];
    for (int k = 0; k < 6; ++k) {
        hm[k] = 0.5 * dtPrevious * vm[k];
        hp[k] = 0.5 * dt * vp[k];
    }
    internal.add(n.internalForces(), hm, hp, 6, -1.0);
    contact.add(n.contactForces(), hm, hp, 6, -1.0);

    // The applied forces: pressures, the load's forces and accelerations.
    double applied[6];
    const double* fe = n.externalForces();
    for (int k = 0; k < 6; ++k)
        applied[k] = fe[k];
    const int slot = loadSlot[i];
    if (slot >= 0) {
        const Load::Values& l = loadValues[static_cast<std::size_t>(slot)];
        const double* a = l.acceleration.data();
        for (int k = 0; k < 3; ++k)
            applied[k] += l.force[k] + m * a[k];
        for (int r = 0; r < 3; ++r)
            applied[3 + r] += l.force[3 + r] + J[3 * r] * a[3] + J[3 * r + 1] * a[4] + J[3 * r + 2] * a[5];
    }
    external.add(applied, hm, hp, 6, 1.0);

    const double c = n.getRayleighDamping();
    double dampingForce[3] = {0.0, 0.0, 0.0};
    if (c != 0.0) {
        for (int k = 0; k < 3; ++k)
            dampingForce[k] = m * c * dampedVelocity[k];
        damping.add(dampingForce, hm, hp, 3, 1.0);
    }

    // The mid-step velocities around t_n, and the velocity at t_n between them.
    const double average = 0.5 * (dtPrevious + dt);
    const double wm = dt / (dtPrevious + dt), wp = dtPrevious / (dtPrevious + dt);
    double v[6];
    for (int k = 0; k < 6; ++k)
        v[k] = wm * vm[k] + wp * vp[k];

    if (n.hasConstraint()) {
        // What the node did beyond the forces: the constraint's reaction.
        const double* F = n.allForces(); // internal, external, contact and the load's forces
        double R[6];
        for (int k = 0; k < 3; ++k) {
            double forces = F[k] - dampingForce[k];
            if (slot >= 0) forces += m * loadValues[static_cast<std::size_t>(slot)].acceleration[k];
            R[k] = m * (vp[k] - vm[k]) / average - forces;
        }
        for (int r = 0; r < 3; ++r) {
            double moment = F[3 + r];
            if (slot >= 0) {
                const double* a = loadValues[static_cast<std::size_t>(slot)].acceleration.data();
                moment += J[3 * r] * a[3] + J[3 * r + 1] * a[4] + J[3 * r + 2] * a[5];
            }
            const double dw0 = vp[3] - vm[3], dw1 = vp[4] - vm[4], dw2 = vp[5] - vm[5];
            R[3 + r] = (J[3 * r] * dw0 + J[3 * r + 1] * dw1 + J[3 * r + 2] * dw2) / average - moment;
        }
        prescribed.add(R, hm, hp, 6, 1.0);
    }

    double spin = 0.0;
    for (int r = 0; r < 3; ++r)
        spin += v[3 + r] * (J[3 * r] * v[3] + J[3 * r + 1] * v[4] + J[3 * r + 2] * v[5]);
    const double nodeKinetic = 0.5 * m * (v[0] * v[0] + v[1] * v[1] + v[2] * v[2]) + 0.5 * spin;
    kinetic += nodeKinetic;
    if (!n.hasConstraint()) freeKinetic += nodeKinetic;
}

void EnergyBalance::endIncrement() {
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
