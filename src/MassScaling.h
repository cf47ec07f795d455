// Mass scaling (CONTROLS MASS SCALING <target>): raises the stable step of
// every element below the target step to the target by adding mass. The
// step of an explicit element goes with the square root of its mass, so an
// element of stable step dt_e < target has its density scaled by
//   s = (target / dt_e)^2,
// its nodes receive (s - 1) times the lumped mass and rotational inertia it
// gave them, and its stable step becomes dt_e sqrt(s) = target. Elements
// without mass (contact elements) take none. Done once, after the elements'
// initial conditions and before the step is taken; with no target nothing
// is touched.
#pragma once

#include <memory>
#include <vector>

class Element;
class Logger;
class Node;

class MassScaling {
public:
    // target 0: no scaling.
    explicit MassScaling(double target) : target(target) {}

    // Scales the elements that need it and re-forms their nodes' inverse
    // inertia. Throws when an element would need a factor that is not a
    // finite number.
    void apply(const std::vector<std::shared_ptr<Element>>& elements,
               const std::vector<std::shared_ptr<Node>>& nodes);
    // The job log section "Mass scaling"; nothing without a target.
    void writeLog(Logger& logger) const;

    double getTarget() const { return target; }
    int getScaledElements() const { return scaledElements; }
    double getAddedMass() const { return addedMass; }
    // Sum of the nodal masses before scaling.
    double getModelMass() const { return modelMass; }
    // The element that needed the largest factor (the first of equals), 0
    // when none was scaled, and that factor (1 then).
    int getLargestElement() const { return largestElement; }
    double getLargestFactor() const { return largestFactor; }

private:
    double target = 0.0;
    int scaledElements = 0;
    double addedMass = 0.0;
    double modelMass = 0.0;
    int largestElement = 0;
    double largestFactor = 1.0;
};
