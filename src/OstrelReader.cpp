#include "OstrelReader.h"

#include "Amplitude.h"
#include "AmplitudeLibrary.h"
#include "Constraint.h"
#include "ConstraintLibrary.h"
#include "ContactSurface.h"
#include "ControlSet.h"
#include "Element.h"
#include "ElementLibrary.h"
#include "Load.h"
#include "Material.h"
#include "MaterialLibrary.h"
#include "Node.h"
#include "RigidBody.h"
#include "Tracker.h"
#include "TrackerLibrary.h"

#include <cmath>
#include <exception>
#include <limits>
#include <sstream>
#include <stdexcept>

OstrelReader::OstrelReader()
    : blockKeywords{"TITLE",        "CONTROLS",   "ELEMENTS",         "NODES",       "LOADS",
                    "CONSTRAINTS",  "MATERIALS",  "TRACKERS",         "GROUPS",      "GEOMETRY",
                    "TEMPERATURES", "AMPLITUDES", "CONTACT_SURFACES", "RIGID_BODIES"},
      delimiters(" ,\t=[]") {}

int OstrelReader::componentCounter(const std::string& keyword) {
    rewindFile();
    int count = 0;
    bool inside = false;
    std::string line;
    while (std::getline(file, line)) {
        trim(line);
        uppercase(line);
        // A header may be written with tabs as well as blanks.
        const std::string first = line.substr(0, line.find_first_of(" \t"));
        if (first == keyword) {
            inside = true;
            continue;
        }
        inside = inside && !inArray(first, blockKeywords);
        if (inside && !first.empty() && first.compare(0, 2, "**") != 0) ++count;
    }
    return count;
}

std::vector<Token> OstrelReader::tokenizeLine(std::string& line) {
    try {
        return tokenize(line, delimiters);
    } catch (const std::out_of_range&) {
        // Name the value that does not fit in a double.
        std::string bad;
        std::string::size_type pos = 0;
        while ((pos = line.find_first_not_of(delimiters, pos)) != std::string::npos) {
            const auto end = line.find_first_of(delimiters, pos);
            const std::string text =
                line.substr(pos, end == std::string::npos ? std::string::npos : end - pos);
            try {
                Token t(text);
            } catch (const std::out_of_range&) {
                bad = text;
                break;
            }
            pos = end;
        }
        try {
            throw std::out_of_range("Number " + bad + " is out of range");
        } catch (...) {
            std::throw_with_nested(std::runtime_error(lineText()));
        }
    }
}

bool OstrelReader::nextDataLine(const BlockKind& kind, std::vector<Token>& tokens) {
    if (currentLine == 0) firstSkippedLine = 0;
    std::string line;
    while (file.good()) {
        if (!std::getline(file, line)) break;
        ++currentLine;
        trim(line);
        if (line.empty()) continue;
        uppercase(line);
        tokens = tokenizeLine(line);
        if (tokens.empty()) {
            if (inBlock && firstSkippedLine == 0) firstSkippedLine = currentLine;
            continue;
        }
        const Token& first = tokens.front();
        const std::string word = first.getWord();
        if (first.isAWord() && word == kind.keyword) {
            inBlock = true;
            if (kind.blockName) {
                if (tokens.size() < 2)
                    throw std::invalid_argument(lineText() + " not enough arguments for " + kind.blockName +
                                                " block");
                if (tokens[1].getWord() != "TYPE") {
                    if (std::string(kind.keyword) == "AMPLITUDES")
                        throw std::invalid_argument(lineText() +
                                                    " TYPE label is missing for amplitude block");
                    throw std::invalid_argument(lineText() + " TYPE label is missing");
                }
                try {
                    *kind.type = tokens.at(2).getWord();
                } catch (const std::out_of_range&) {
                    std::throw_with_nested(std::runtime_error(lineText()));
                }
            }
            continue;
        }
        if (first.isAWord() && inArray(word, blockKeywords)) {
            inBlock = false;
            continue;
        }
        // Comment lines are left out here as they are by the counter.
        if (first.isAWord() && word.compare(0, 2, "**") == 0) continue;
        if (inBlock && first.isANumber() == kind.numbered) return true;
        if (inBlock && firstSkippedLine == 0) firstSkippedLine = currentLine;
    }
    return false;
}

int OstrelReader::componentNumber(const Token& token, const char* kind) {
    const double v = token.getNumber();
    if (!std::isfinite(v) || v <= static_cast<double>(std::numeric_limits<int>::min()) - 1.0 ||
        v >= static_cast<double>(std::numeric_limits<int>::max()) + 1.0) {
        std::ostringstream text;
        text << v;
        throw std::invalid_argument(std::string(kind) + " number " + text.str() + " is not a valid integer");
    }
    return static_cast<int>(v);
}

std::invalid_argument OstrelReader::missingLine(const char* keyword, const char* what) const {
    const std::string where =
        firstSkippedLine > 0 ? "At line " + std::to_string(firstSkippedLine) + " a" : "A";
    return std::invalid_argument(where + " line of the " + keyword + " block does not start with " + what);
}

std::shared_ptr<Node> OstrelReader::getNextNode(const std::vector<std::shared_ptr<Constraint>>& constraints,
                                                const std::vector<std::shared_ptr<Load>>& loads) {
    auto node = std::make_shared<Node>();
    std::vector<Token> tokens;
    if (!nextDataLine({"NODES", nullptr, true, nullptr}, tokens)) throw missingLine("NODES", "a node number");
    // Node lines are not wrapped with their line number, so the message carries it.
    try {
        node->setNumber(componentNumber(tokens.front(), "Node"));
    } catch (const std::invalid_argument& e) {
        throw std::invalid_argument(lineText() + " " + e.what());
    }
    tokens.erase(tokens.begin());
    node->parseOstrel(tokens, constraints, loads);
    return node;
}

std::shared_ptr<Element>
OstrelReader::getNextElement(const std::vector<std::shared_ptr<Node>>& nodes,
                             const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                             const std::vector<std::shared_ptr<Material>>& materials,
                             const std::vector<std::shared_ptr<Load>>& loads) {
    std::vector<Token> tokens;
    if (!nextDataLine({"ELEMENTS", "element", true, &currentElementType}, tokens))
        throw missingLine("ELEMENTS", "an element number");
    try {
        auto element = ElementLibrary::getElementOstrel(currentElementType);
        element->setNumber(componentNumber(tokens.front(), "Element"));
        tokens.erase(tokens.begin());
        element->parseOstrel(tokens, nodes, nodesByNumber, materials, loads);
        return element;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<Constraint>
OstrelReader::getNextConstraint(const std::vector<std::shared_ptr<Node>>& /*nodes*/,
                                const std::vector<std::shared_ptr<Amplitude>>& amplitudes) {
    std::vector<Token> tokens;
    if (!nextDataLine({"CONSTRAINTS", "constraint", false, &currentConstraintType}, tokens))
        throw missingLine("CONSTRAINTS", "a name");
    try {
        auto constraint = ConstraintLibrary::getConstraintOstrel(currentConstraintType);
        std::string name = tokens.front().getWord();
        constraint->setName(name);
        tokens.erase(tokens.begin());
        constraint->parseOstrel(tokens, amplitudes);
        return constraint;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<Load> OstrelReader::getNextLoad(const std::vector<std::shared_ptr<Amplitude>>& amplitudes) {
    std::vector<Token> tokens;
    if (!nextDataLine({"LOADS", nullptr, false, nullptr}, tokens)) throw missingLine("LOADS", "a name");
    try {
        auto load = std::make_shared<Load>();
        std::string name = tokens.front().getWord();
        load->setName(name);
        tokens.erase(tokens.begin());
        load->parseOstrel(tokens, amplitudes);
        return load;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<Material> OstrelReader::getNextMaterial() {
    std::vector<Token> tokens;
    if (!nextDataLine({"MATERIALS", "material", false, &currentMaterialType}, tokens))
        throw missingLine("MATERIALS", "a name");
    try {
        auto material = MaterialLibrary::getMaterialOstrel(currentMaterialType);
        std::string name = tokens.front().getWord();
        material->setName(name);
        tokens.erase(tokens.begin());
        material->parseOstrel(tokens);
        return material;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<Amplitude> OstrelReader::getNextAmplitude() {
    std::vector<Token> tokens;
    if (!nextDataLine({"AMPLITUDES", "amplitude", false, &currentAmplitudeType}, tokens))
        throw missingLine("AMPLITUDES", "a name");
    try {
        auto amplitude = AmplitudeLibrary::getAmplitudeOstrel(currentAmplitudeType);
        std::string name = tokens.front().getWord();
        amplitude->setName(name);
        tokens.erase(tokens.begin());
        amplitude->parseOstrel(tokens);
        return amplitude;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<Tracker>
OstrelReader::getNextTracker(const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                             const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) {
    std::vector<Token> tokens;
    if (!nextDataLine({"TRACKERS", "tracker", false, &currentTrackerType}, tokens))
        throw missingLine("TRACKERS", "a name");
    try {
        auto tracker = TrackerLibrary::getTrackerOstrel(currentTrackerType);
        tracker->init(path);
        tracker->setName(tokens.front().getWord());
        tokens.erase(tokens.begin());
        tracker->parseOstrel(tokens, nodesByNumber, elementsByNumber);
        return tracker;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<ContactSurface> OstrelReader::getNextContactSurface() {
    std::vector<Token> tokens;
    if (!nextDataLine({"CONTACT_SURFACES", nullptr, false, nullptr}, tokens))
        throw missingLine("CONTACT_SURFACES", "a name");
    try {
        auto surface = std::make_shared<ContactSurface>();
        surface->setName(tokens.front().getWord());
        surface->setLine(currentLine);
        tokens.erase(tokens.begin());
        surface->parseOstrel(tokens);
        return surface;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

std::shared_ptr<RigidBody>
OstrelReader::getNextRigidBody(const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber) {
    std::vector<Token> tokens;
    if (!nextDataLine({"RIGID_BODIES", nullptr, false, nullptr}, tokens))
        throw missingLine("RIGID_BODIES", "a name");
    try {
        auto body = std::make_shared<RigidBody>();
        body->setName(tokens.front().getWord());
        body->setLine(currentLine);
        tokens.erase(tokens.begin());
        body->parseOstrel(tokens, nodesByNumber);
        return body;
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}

void OstrelReader::getControlSet(std::unique_ptr<ControlSet>& controlSet) {
    std::vector<Token> tokens;
    if (!nextDataLine({"CONTROLS", nullptr, false, nullptr}, tokens))
        throw missingLine("CONTROLS", "a keyword");
    try {
        if (!controlSet) controlSet = std::make_unique<ControlSet>();
        controlSet->setLine(currentLine);
        controlSet->parseOstrel(tokens);
    } catch (const std::exception&) {
        std::throw_with_nested(std::runtime_error(lineText()));
    }
}
