#include "VtkWriter.h"

#include "Checkpoint.h"
#include "Element.h"
#include "Node.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <system_error>

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
    series.clear();
    // The list of an earlier run would name files this run has not written
    // (yet); it goes, and the first print writes a new one.
    std::error_code ignored;
    std::filesystem::remove(seriesFile(), ignored);
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

    // Appended after the twelve scalars, as field arrays (which readers
    // take whole, unlike the attributes of which they may keep only the
    // first): the yarn directions per cell, then the nodal vectors (point 0,
    // on no node, gets zeros).
    double warp[3], weft[3];
    file << "FIELD YARNS 2\n";
    file << "WARP 3 " << numberOfCells << " double\n";
    for (const auto& e : elements) {
        e->yarnDirections(warp, weft);
        writeVector(warp[0], warp[1], warp[2]);
    }
    file << "WEFT 3 " << numberOfCells << " double\n";
    for (const auto& e : elements) {
        e->yarnDirections(warp, weft);
        writeVector(weft[0], weft[1], weft[2]);
    }
    // The points are the positions at the end of the print's step, the cell
    // arrays and the contact forces what the step computed from its start
    // (intended; see the user guide, "Quirks worth knowing").
    file << "POINT_DATA " << numberOfPoints << "\n";
    file << "FIELD NODES 3\n";
    file << "DISPLACEMENT 3 " << numberOfPoints << " double\n0 0 0\n";
    for (const auto& n : nodes) {
        const auto u = n->getDisplacement();
        writeVector(u[0], u[1], u[2]);
    }
    file << "VELOCITY 3 " << numberOfPoints << " double\n0 0 0\n";
    for (const auto& n : nodes)
        writeVector(n->getX_vel(), n->getY_vel(), n->getZ_vel());
    file << "CONTACT_FORCE 3 " << numberOfPoints << " double\n0 0 0\n";
    for (const auto& n : nodes)
        writeVector(n->getXContactForce(), n->getYContactForce(), n->getZContactForce());

    file.close();
    if (file.fail()) {
        file.clear();
        throw std::runtime_error("Results file " + target.string() + " could not be written completely");
    }
    series.push_back({target.filename().string(), clockTime()});
    writeSeries();
    ++printNumber;
}

void VtkWriter::writeVector(double x, double y, double z) {
    char line[96];
    std::snprintf(line, sizeof line, "%.10g %.10g %.10g\n", x, y, z);
    file << line;
}

std::filesystem::path VtkWriter::seriesFile() const {
    return std::filesystem::path(parentPathText) / (filenameText + extensionText + ".series");
}

namespace {
// A file name as a JSON string.
std::string jsonString(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
            out += escaped;
        } else {
            out += c;
        }
    }
    return out + "\"";
}
} // namespace

void VtkWriter::writeSeries() const {
    // Written whole under another name and renamed over the old list, so that
    // a viewer that reads it during the run never sees half a list.
    const std::filesystem::path target = seriesFile();
    std::filesystem::path temporary = target;
    temporary += ".tmp";
    {
        std::ofstream out(temporary, std::ios::out | std::ios::trunc);
        out << "{\n  \"file-series-version\": \"1.0\",\n  \"files\": [";
        for (std::size_t i = 0; i < series.size(); ++i) {
            char time[40];
            std::snprintf(time, sizeof time, "%.17g", series[i].time);
            out << (i == 0 ? "\n" : ",\n") << "    { \"name\": " << jsonString(series[i].name)
                << ", \"time\": " << time << " }";
        }
        out << "\n  ]\n}\n";
        out.close();
        if (!out) throw std::runtime_error("Series file " + temporary.string() + " cannot be written");
    }
    std::error_code failed;
    std::filesystem::rename(temporary, target, failed);
    if (failed)
        throw std::runtime_error("Series file " + target.string() +
                                 " cannot be written: " + failed.message());
}

void VtkWriter::checkpoint(Archive& archive) {
    archive.pod(printNumber);
    archive.pod(numberOfPoints);
    archive.pod(numberOfCells);
    archive.pod(cellListSize);
    std::uint64_t count = series.size();
    archive.pod(count);
    if (!archive.saving()) series.assign(static_cast<std::size_t>(count), SeriesEntry{});
    for (SeriesEntry& e : series) {
        archive.text(e.name);
        archive.pod(e.time);
    }
    // The set-up removed the list; the files it names are still there.
    if (!archive.saving() && !series.empty()) writeSeries();
}
