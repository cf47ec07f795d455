#include "VtkWriter.h"

#include "Element.h"
#include "Node.h"

#include <algorithm>
#include <stdexcept>

VtkWriter::VtkWriter() {
    type = "VTK";
}

void VtkWriter::init(const std::filesystem::path& deckPath) {
    Writer::init(deckPath);
    extensionText = ".vtk";
}

void VtkWriter::initializeWriter(std::vector<std::shared_ptr<Node>>& modelNodes,
                                 std::vector<std::shared_ptr<Element>>& modelElements) {
    nodes = modelNodes;
    elements = modelElements;
    std::sort(nodes.begin(), nodes.end(), [](const std::shared_ptr<Node>& a, const std::shared_ptr<Node>& b) {
        return a->getNumber() < b->getNumber();
    });
    std::sort(elements.begin(), elements.end(),
              [](const std::shared_ptr<Element>& a, const std::shared_ptr<Element>& b) {
                  return a->getNumber() < b->getNumber();
              });
    printNumber = 0;
}

std::filesystem::path VtkWriter::nextFile() const {
    return std::filesystem::path(parentPathText) /
           (filenameText + "_" + std::to_string(printNumber) + extensionText);
}

void VtkWriter::writeResults(std::vector<std::shared_ptr<Node>>& modelNodes,
                             std::vector<std::shared_ptr<Element>>& modelElements) {
    if (printNumber == 0) {
        numberOfPoints = static_cast<int>(modelNodes.size()) + 1;
        numberOfCells = static_cast<int>(modelElements.size());
        cellListSize = 0;
        for (const auto& e : modelElements)
            cellListSize += static_cast<int>(e->getNodes().size()) + 1;
    }
    const std::filesystem::path target = nextFile();
    file.open(target, std::ios::out | std::ios::trunc);
    if (!file) {
        file.clear();
        throw std::runtime_error("Results file " + target.string() + " cannot be written");
    }
    file << "# vtk DataFile Version 3.0 \n"
         << "vtk ouput \n"
         << "ASCII \n"
         << "DATASET UNSTRUCTURED_GRID\n";
    file << "POINTS " << numberOfPoints << " float \n";
    file << "0.0 \t 0.0 \t 0.0 \n";
    for (const auto& n : nodes)
        file << n->getX_pos() << "\t" << n->getY_pos() << "\t" << n->getZ_pos() << "\n";
    file << "CELLS " << numberOfCells << " " << cellListSize << "\n";
    for (const auto& e : elements)
        file << e->printVTK(vtkCellLine, 0);
    file << "CELL_TYPES  " << numberOfCells << "\n";
    for (const auto& e : elements)
        file << e->printVTK(vtkCellTypeLine, 0);
    file << "CELL_DATA  " << numberOfCells << "\n";

    struct Section {
        const char* label;
        int what;
        int component;
    };
    // E12 and S12 carry component 5, E23 and S23 component 3, across the
    // vector's own order 11 22 33 12 13 23 (intended; see the user guide,
    // "Quirks worth knowing").
    static const Section sections[] = {{"E11", vtkStrain, 0}, {"E22", vtkStrain, 1}, {"E33", vtkStrain, 2},
                                       {"E12", vtkStrain, 5}, {"E13", vtkStrain, 4}, {"E23", vtkStrain, 3},
                                       {"S11", vtkStress, 0}, {"S22", vtkStress, 1}, {"S33", vtkStress, 2},
                                       {"S12", vtkStress, 5}, {"S13", vtkStress, 4}, {"S23", vtkStress, 3}};
    for (const Section& s : sections) {
        file << "SCALARS " << s.label << " FLOAT\n"
             << "LOOKUP_TABLE default \n";
        std::size_t count = 0;
        for (const auto& e : elements) {
            file << e->printVTK(s.what, s.component);
            ++count;
            file << (count % 6 == 0 ? "\n" : "\t");
        }
        if (count % 6 != 0) file << "\n";
    }
    file.close();
    if (file.fail()) {
        file.clear();
        throw std::runtime_error("Results file " + target.string() + " could not be written completely");
    }
    ++printNumber;
}
