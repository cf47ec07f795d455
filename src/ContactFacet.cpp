#include "ContactFacet.h"

#include "DeckParser.h"

#include <stdexcept>

ContactFacet::ContactFacet() {
    numberOfNodes = 3;
    vtkCellType = "5";
}

void ContactFacet::parseOstrel(std::vector<Token> tokens, const std::vector<std::shared_ptr<Node>>&,
                               const std::unordered_map<int, std::shared_ptr<Node>>& nodeMap,
                               const std::vector<std::shared_ptr<Material>>&,
                               const std::vector<std::shared_ptr<Load>>&) {
    const DeckParser line(tokens, DeckParser::AtEnd::Checked);
    using K = DeckParser::Follows;
    line.read({{"NODES", K::Anything,
                [&](std::size_t i) {
                    nodes =
                        line.nodes(i + 1, 3, "Not enough nodes inputs for Element Contact_Facet", nodeMap);
                    return 4;
                }},
               {"SURFACE", K::Word, [&](std::size_t i) {
                    surface = line.at(i + 1).getWord();
                    return 2;
                }}});
    if (nodes.size() != 3) throw DeckParser::nodesNotSet(number);
    if (surface.empty())
        throw std::invalid_argument("Contact facet " + std::to_string(number) +
                                    " names no SURFACE: give SURFACE and the name of a contact surface");
}

std::string ContactFacet::printVTK(int what, int component) {
    if (what == vtkStrain || what == vtkStress || what == vtkStressExtra) return "0.0";
    return Element::printVTK(what, component);
}
