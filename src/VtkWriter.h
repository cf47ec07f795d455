// Legacy VTK ASCII unstructured-grid writer: one file per print time with the
// node coordinates as points (a dummy point 0 so that point k is node k), the
// elements as cells, twelve cell scalars (six strains, six stresses), the
// yarn directions as cell field arrays, and the displacement, velocity and
// contact force of every node as point field arrays. Beside the files it keeps
// <stem>.vtk.series, the list of the files written so far with their model
// times, in the JSON form that ParaView opens as one time series.
#pragma once

#include "Writer.h"

class VtkWriter : public Writer {
public:
    VtkWriter();
    void init(const std::filesystem::path& deckPath) override;
    void initializeWriter(std::vector<std::shared_ptr<Node>>& nodes,
                          std::vector<std::shared_ptr<Element>>& elements) override;
    // The print number, the list of the series file (rewritten when read)
    // and the sizes taken at the first print.
    void checkpoint(Archive& archive) override;
    void writeResults(std::vector<std::shared_ptr<Node>>& nodes,
                      std::vector<std::shared_ptr<Element>>& elements) override;
    // Path of the file that the next writeResults call writes.
    std::filesystem::path nextFile() const;
    // Path of the series file.
    std::filesystem::path seriesFile() const;

private:
    // One line "x y z" with ten significant digits.
    void writeVector(double x, double y, double z);
    // Rewrites the series file from `series`.
    void writeSeries() const;

    struct SeriesEntry {
        std::string name;
        double time;
    };
    std::vector<SeriesEntry> series;
    int printNumber = 0;
    std::vector<std::shared_ptr<Node>> nodes;
    std::vector<std::shared_ptr<Element>> elements;
    int cellListSize = 0;
    int numberOfPoints = 0;
    int numberOfCells = 0;
};
