#include "FaceContact.h"

#include "Checkpoint.h"
#include "ContactLine.h"
#include "ContactTriangle.h"
#include "Node.h"

#include <stdexcept>

bool FaceContact::readKeyword(const std::vector<Token>& tokens, std::size_t& i, const std::string& key,
                              const char* kind, int number) {
    if (key == "CONTACT" && tokens.at(i + 1).isAWord()) {
        const std::string word = tokens[i + 1].getWord();
        if (word == "BASIC")
            type = faceContact;
        else if (word == "EDGE")
            type = faceEdgeContact;
        else
            throw std::invalid_argument("Invalid CONTACT type");
    } else if (key == "SURFACE" && tokens.at(i + 1).isAWord()) {
        surface = tokens[i + 1].getWord();
    } else if (key == "FACTOR" && tokens.at(i + 1).isANumber()) {
        factor = tokens[i + 1].getFiniteNumber("FACTOR of " + std::string(kind) + " element " +
                                               std::to_string(number));
        factorSet = true;
    } else if (key == "FRICTION" && tokens.at(i + 1).isANumber()) {
        friction = tokens[i + 1].getFiniteNumber("FRICTION of " + std::string(kind) + " element " +
                                                 std::to_string(number));
        frictionSet = true;
    } else {
        return false;
    }
    i += 2;
    return true;
}

void FaceContact::build(const std::vector<std::shared_ptr<Node>>& elementNodes, double thickness,
                        const std::vector<std::shared_ptr<Node>>& allNodes,
                        const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                        const std::vector<std::shared_ptr<Material>>& materials,
                        const std::vector<std::shared_ptr<Load>>& loads) {
    if (!onFace()) return;
    const std::string n1 = std::to_string(elementNodes.at(0)->getNumber());
    const std::string n2 = std::to_string(elementNodes.at(1)->getNumber());
    const std::string n3 = std::to_string(elementNodes.at(2)->getNumber());
    triangle = ContactTriangle::makeFaceContact(n1, n2, n3, thickness, factorSet, factor, frictionSet,
                                                friction, allNodes, nodeMap, materials, loads);
    if (type != faceEdgeContact) return;
    auto makeLine = [&](int lineNumber, const std::string& a, const std::string& b) {
        return ContactLine::makeEdgeContact(lineNumber, a, b, thickness * 0.5, factorSet, factor, allNodes,
                                            nodeMap, materials, loads);
    };
    line1 = makeLine(-1, n1, n2);
    line3 = makeLine(-3, n3, n1);
    line2 = makeLine(-2, n2, n3);
}

void FaceContact::assembleMassMatrix() {
    if (onFace()) triangle->assembleMassMatrix();
    if (type != faceEdgeContact) return;
    for (ContactLine* line : {line1.get(), line2.get(), line3.get()})
        if (line) line->assembleMassMatrix();
}

void FaceContact::attachContactSearch(ContactSearch& search) {
    if (onFace()) triangle->attachContactSearch(search);
    if (type != faceEdgeContact) return;
    for (ContactLine* line : {line1.get(), line2.get(), line3.get()})
        if (line) line->attachContactSearch(search);
}

void FaceContact::setInitialConditions() {
    if (onFace()) triangle->setInitialConditions();
    if (type != faceEdgeContact) return;
    for (ContactLine* line : {line1.get(), line2.get(), line3.get()})
        if (line) line->setInitialConditions();
}

void FaceContact::updateLocalCoordinateSystem() {
    if (onFace()) triangle->updateLocalCoordinateSystem();
    if (type != faceEdgeContact) return;
    for (ContactLine* line : {line1.get(), line2.get(), line3.get()})
        if (line) line->updateLocalCoordinateSystem();
}

void FaceContact::computeContactForces() {
    if (!onFace()) return;
    triangle->computeContactForces();
    if (type != faceEdgeContact) return;
    for (ContactLine* line : {line1.get(), line2.get(), line3.get()})
        if (line) line->computeContactForces();
}

void FaceContact::checkpoint(Archive& archive) {
    if (triangle) triangle->checkpoint(archive);
    for (const auto* line : {&line1, &line2, &line3})
        if (*line) (*line)->checkpoint(archive);
}
