// Reads results back for end-to-end checks: a legacy VTK file written by the
// program (points, cells, cell scalars, and the three-component field arrays
// of cells and points) and the values of one list entry of the Markdown job
// log (for example every "Current time: ").
#pragma once

#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace readback {

struct VtkResult {
    std::vector<std::array<double, 3>> points;
    std::vector<std::vector<int>> cells;
    std::vector<int> cellTypes;
    std::map<std::string, std::vector<double>> scalars;
    // Field arrays of three components, by name.
    std::map<std::string, std::vector<std::array<double, 3>>> cellVectors;
    std::map<std::string, std::vector<std::array<double, 3>>> pointVectors;
};

inline VtkResult readVtk(const std::filesystem::path& file) {
    VtkResult r;
    std::ifstream in(file);
    std::string word;
    bool pointData = false;
    while (in >> word) {
        if (word == "POINTS") {
            int n;
            std::string type;
            in >> n >> type;
            r.points.resize(n);
            for (auto& p : r.points)
                in >> p[0] >> p[1] >> p[2];
        } else if (word == "CELLS") {
            int n, size;
            in >> n >> size;
            r.cells.resize(n);
            for (auto& c : r.cells) {
                int count;
                in >> count;
                c.resize(count);
                for (int& v : c)
                    in >> v;
            }
        } else if (word == "CELL_TYPES") {
            int n;
            in >> n;
            r.cellTypes.resize(n);
            for (int& t : r.cellTypes)
                in >> t;
        } else if (word == "POINT_DATA" || word == "CELL_DATA") {
            pointData = word == "POINT_DATA";
        } else if (word == "FIELD") {
            std::string name;
            int arrays;
            in >> name >> arrays;
            for (int a = 0; a < arrays; ++a) {
                std::string array, type;
                int components, tuples;
                in >> array >> components >> tuples >> type;
                if (components != 3) break; // the program writes none
                auto& vectors = (pointData ? r.pointVectors : r.cellVectors)[array];
                vectors.resize(tuples);
                for (auto& v : vectors)
                    in >> v[0] >> v[1] >> v[2];
            }
        } else if (word == "SCALARS") {
            std::string name, type, lookup, table;
            in >> name >> type >> lookup >> table;
            std::vector<double>& values = r.scalars[name];
            values.resize(r.cells.size());
            for (double& v : values)
                in >> v;
        }
    }
    return r;
}

// Every value that follows `label` on a line of the log, in file order.
inline std::vector<double> logValues(const std::filesystem::path& log, const std::string& label) {
    std::vector<double> values;
    std::ifstream in(log);
    std::string line;
    while (std::getline(in, line)) {
        const auto pos = line.find(label);
        if (pos != std::string::npos) values.push_back(std::stod(line.substr(pos + label.size())));
    }
    return values;
}

// The k-th result file of a deck run in its own folder.
inline std::filesystem::path resultFile(const std::filesystem::path& deck, std::size_t k) {
    const std::string stem = deck.stem().string();
    return deck.parent_path() / ("Results_" + stem) / (stem + "_" + std::to_string(k) + ".vtk");
}

// The times of the result files, from the log, and the last file.
inline std::vector<double> printTimes(const std::filesystem::path& deck) {
    return logValues(deck.parent_path() / (deck.stem().string() + ".md"), "Current time: ");
}
inline std::filesystem::path lastResult(const std::filesystem::path& deck, double* time = nullptr) {
    const auto times = printTimes(deck);
    if (time && !times.empty()) *time = times.back();
    return resultFile(deck, times.empty() ? 0 : times.size() - 1);
}

// The rows of a tracker file as numbers (time, values, total), its header
// line apart.
inline std::vector<std::vector<double>> csvRows(const std::filesystem::path& file,
                                                std::string* header = nullptr) {
    std::vector<std::vector<double>> rows;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("Time", 0) == 0) {
            if (header) *header = line;
            continue;
        }
        std::vector<double> row;
        std::stringstream cells(line);
        for (std::string cell; std::getline(cells, cell, ',');)
            row.push_back(std::stod(cell));
        rows.push_back(row);
    }
    return rows;
}
inline std::vector<double> lastRow(const std::filesystem::path& csv) {
    const auto rows = csvRows(csv);
    return rows.empty() ? std::vector<double>{} : rows.back();
}

} // namespace readback
