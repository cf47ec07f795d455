// Geometry of a triangle at its nodes' current positions, shared by the
// membrane, the shell and the contact triangle.
//
// With the edge vectors a = x2 - x1 and b = x3 - x1 the frame is
//   e1 = a / |a|,  e3 = (a x b) / |a x b|,  e2 = e3 x e1,
// kept row by row in `basis`. In it node 1 sits at (0, 0), node 2 at (x2, 0)
// and node 3 at (x3, y3), in closed form
//   x2 = |a|,  x3 = a.b / |a|,  y3 = |a x b| / |a|,
// and the area is A = |a x b| / 2. A degenerate triangle (|a x b| = 0) leaves
// a frame and coordinates that are not numbers; the elements test for that.
//
// The lumped quantities follow from the same few numbers: each node of a
// triangle of mass m and thickness t carries the rotational inertia
// (m/3)(t^2/12 + A/12) about each axis; the stable step is one tenth of the
// smallest altitude 2A / L_max over the wave speed c; a pressure p puts
// p A / 3 along e3 on each node.
#pragma once

class Node;

class TriangleGeometry {
public:
    // Frame, coordinates and area of the triangle n1 n2 n3.
    void update(const Node& n1, const Node& n2, const Node& n3);
    // The same from the edge vectors a = x2 - x1 and b = x3 - x1.
    void update(const double (&a)[3], const double (&b)[3]);

    // Rows e1, e2, e3.
    const double (&basis() const)[3][3] { return frame; }
    double area() const { return 0.5 * twiceArea; }
    double x2() const { return localX2; }
    double x3() const { return localX3; }
    double y3() const { return localY3; }
    // Component of the global vector (x, y, z) along row k of the frame.
    double component(int k, double x, double y, double z) const {
        return frame[k][0] * x + frame[k][1] * y + frame[k][2] * z;
    }
    // The force p A / 3 along e3 that a pressure p puts on each node of a
    // triangle of area A.
    void pressureForce(double pressure, double area, double (&f)[3]) const {
        const double share = pressure * area / 3.0;
        f[0] = share * frame[2][0];
        f[1] = share * frame[2][1];
        f[2] = share * frame[2][2];
    }

    // Rotational inertia about each axis that one node of a triangle of
    // mass m, thickness t and area A receives: (m/3)(t^2/12 + A/12).
    static double nodalInertia(double mass, double thickness, double area) {
        return mass / 3.0 * (thickness * thickness / 12.0 + area / 12.0);
    }
    // Lumps a triangle's mass m onto its nodes: m/3 and that inertia about
    // each axis to each.
    static void lumpMass(Node& n1, Node& n2, Node& n3, double mass, double thickness, double area);
    // 0.1 (2A / L_max) / c, with L_max the longest edge of n1 n2 n3 now. Not
    // a number when c and the altitude are zero.
    static double stableStep(const Node& n1, const Node& n2, const Node& n3, double area, double waveSpeed);
    // The unit vector along F d in global axes, d a direction of the initial
    // frame (components along e1, e2) and F the deformation gradient into the
    // current frame (rows e1, e2 of the basis). Leaves out alone while F d is
    // zero or not finite (before the first strain update F is zero).
    void currentDirection(const double (&F)[2][2], const double (&d)[2], double (&out)[3]) const;

private:
    double frame[3][3] = {};
    double twiceArea = 0.0; // |a x b|
    double localX2 = 0.0, localX3 = 0.0, localY3 = 0.0;
};
