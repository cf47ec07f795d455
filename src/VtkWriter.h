// Legacy VTK ASCII unstructured-grid writer: one file per print time with the
// node coordinates as points (a dummy point 0 so that point k is node k), the
// elements as cells, and twelve cell scalars (six strains, six stresses).
#pragma once

#include "Writer.h"

class VtkWriter : public Writer {
public:
    VtkWriter();
    void init(const std::filesystem::path& deckPath) override;
    void initializeWriter(std::vector<std::shared_ptr<Node>>& nodes,
                          std::vector<std::shared_ptr<Element>>& elements) override;
    void writeResults(std::vector<std::shared_ptr<Node>>& nodes,
                      std::vector<std::shared_ptr<Element>>& elements) override;
    // Path of the file that the next writeResults call writes.
    std::filesystem::path nextFile() const;

private:
    int printNumber = 0;
    std::vector<std::shared_ptr<Node>> nodes;
    std::vector<std::shared_ptr<Element>> elements;
    int cellListSize = 0;
    int numberOfPoints = 0;
    int numberOfCells = 0;
};
