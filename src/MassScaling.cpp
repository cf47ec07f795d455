#include "MassScaling.h"

#include "DeckParser.h"
#include "Element.h"
#include "Logger.h"
#include "Node.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <string>

void MassScaling::apply(const std::vector<std::shared_ptr<Element>>& elements,
                        const std::vector<std::shared_ptr<Node>>& nodes) {
    if (target == 0.0) return;
    // A rigid body's reference node carries its members' masses.
    for (const auto& n : nodes)
        if (!n->isRigidMember()) modelMass += n->getMass();
    const double unbounded = std::numeric_limits<double>::infinity();
    for (const auto& e : elements) {
        // Elements that do not bound the step (contact elements) leave the
        // unbounded candidate as it is.
        const double stable = e->checkTimestep(unbounded);
        if (!(stable < target)) continue;
        const double ratio = target / stable;
        const double s = ratio * ratio;
        const double added = std::isfinite(s) ? e->scaleMass(s) : s;
        if (!std::isfinite(added))
            throw std::invalid_argument("MASS SCALING: element " + std::to_string(e->getNumber()) +
                                        " (stable step " + DeckParser::number(stable) +
                                        ") would need a mass that is not a finite number to reach the target "
                                        "step " +
                                        DeckParser::number(target) + ": choose a smaller target step");
        if (!(added > 0.0)) continue;
        ++scaledElements;
        addedMass += added;
        if (s > largestFactor) {
            largestFactor = s;
            largestElement = e->getNumber();
        }
    }
    if (scaledElements > 0)
        for (const auto& n : nodes)
            n->determineMassMatrix();
}

void MassScaling::writeLog(Logger& logger) const {
    if (target == 0.0) return;
    logger.writeSection("Mass scaling", 1);
    logger.writeList("Target step: " + DeckParser::number(target), 0);
    if (scaledElements == 0) {
        logger.writeList("No element needed added mass: every stable step is at least the target step", 0);
    } else {
        logger.writeList("Scaled elements: " + std::to_string(scaledElements), 0);
        logger.writeList("Added mass: " + DeckParser::number(addedMass), 0);
        logger.writeList("Model mass before scaling: " + DeckParser::number(modelMass), 0);
        logger.writeList("Added mass in per cent of the model mass: " +
                             DeckParser::number(100.0 * addedMass / modelMass) + " %",
                         0);
        logger.writeList("Largest factor: " + DeckParser::number(largestFactor) + " (element " +
                             std::to_string(largestElement) + ")",
                         0);
    }
    logger.newLine();
}
