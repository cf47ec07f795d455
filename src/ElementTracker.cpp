#include "ElementTracker.h"

#include "Element.h"

#include <cstdlib>
#include <stdexcept>

void ElementTracker::parseOstrel(std::vector<Token> tokens,
                                 const std::unordered_map<int, std::shared_ptr<Node>>& /*nodesByNumber*/,
                                 const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string word = tokenText(tokens[i]);
        if (tokens[i].isAWord() && word == "ELEMENTS") {
            ++i;
            for (; i < tokens.size() && tokens[i].isANumber(); ++i) {
                const int number = entityNumber(tokens[i]);
                const auto found = elementsByNumber.find(number);
                if (found == elementsByNumber.end())
                    throw std::invalid_argument("Node " + std::to_string(number) + " is not found");
                elements.push_back(found->second);
            }
        } else if (tokens[i].isAWord() && word == "COMPONENT") {
            if (component != UNSET) throw std::invalid_argument("Tracker direction has been already set");
            if (i + 1 >= tokens.size()) throw std::invalid_argument("Tracker component is missing");
            const std::string value = tokenText(tokens[i + 1]);
            if (value == "C11")
                component = 0;
            else if (value == "C22")
                component = 1;
            else if (value == "C33")
                component = 2;
            else if (value == "C23")
                component = 3;
            else if (value == "C13")
                component = 4;
            else if (value == "C12")
                component = 5;
            else
                throw std::invalid_argument("Input " + value + " is not recognized");
            i += 2;
        } else if (tokens[i].isAWord() && word == "TYPE") {
            if (type != UNSET) throw std::invalid_argument("Tracker type has been already set");
            if (i + 1 >= tokens.size()) throw std::invalid_argument("Tracker type is missing");
            const std::string value = tokenText(tokens[i + 1]);
            if (value == "STRAIN")
                type = STRAIN;
            else if (value == "STRESS")
                type = STRESS;
            else
                throw std::invalid_argument("Input " + value + " is not a recognized type");
            i += 2;
        } else {
            throw std::invalid_argument("Input " + word + " is not a tracker parameter");
        }
    }
}

void ElementTracker::printCSV(double time) {
    if (time == 0.0) {
        file << "Time ";
        for (const auto& e : elements)
            file << ", Node " << e->getNumber();
        file << ", Total \n";
    }
    char text[64];
    formatTime(time, text);
    file << text;
    const int code = component == UNSET ? vtkCellTypeLine
                     : type == STRAIN   ? vtkStrain
                     : type == STRESS   ? vtkStress
                                        : vtkCellTypeLine;
    float total = 0.0f;
    for (const auto& e : elements) {
        if (code == 0) {
            file << ", 0";
            continue;
        }
        const std::string value = e->printVTK(code, component);
        file << ", " << value;
        // Read back in single precision as the text stands. Unlike std::stof,
        // strtof neither throws on a text that holds no number (it adds 0) nor
        // on a value beyond float range (it adds an infinity), so one diverged
        // element cannot stop the run's output.
        total += std::strtof(value.c_str(), nullptr);
    }
    file << ", " << total << std::endl;
}
