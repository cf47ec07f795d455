// Reader of decks in the block format: counts the lines of each block kind and
// hands each data line, as tokens, to the component that parses it.
#pragma once

#include "Reader.h"

#include <string>
#include <vector>

class OstrelReader : public Reader {
public:
    OstrelReader();
    ~OstrelReader() override = default;

    std::shared_ptr<Node> getNextNode(const std::vector<std::shared_ptr<Constraint>>& constraints,
                                      const std::vector<std::shared_ptr<Load>>& loads) override;
    std::shared_ptr<Element>
    getNextElement(const std::vector<std::shared_ptr<Node>>& nodes,
                   const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                   const std::vector<std::shared_ptr<Material>>& materials,
                   const std::vector<std::shared_ptr<Load>>& loads) override;
    std::shared_ptr<Constraint>
    getNextConstraint(const std::vector<std::shared_ptr<Node>>& nodes,
                      const std::vector<std::shared_ptr<Amplitude>>& amplitudes) override;
    std::shared_ptr<Load> getNextLoad(const std::vector<std::shared_ptr<Amplitude>>& amplitudes) override;
    std::shared_ptr<Material> getNextMaterial() override;
    std::shared_ptr<Amplitude> getNextAmplitude() override;
    std::shared_ptr<Tracker>
    getNextTracker(const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                   const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) override;
    std::shared_ptr<ContactSurface> getNextContactSurface() override;
    std::shared_ptr<RigidBody>
    getNextRigidBody(const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber) override;
    void getControlSet(std::unique_ptr<ControlSet>& controlSet) override;
    std::shared_ptr<Writer> getWriter() override { return nullptr; }
    int numberOfNodes() override { return componentCounter("NODES"); }
    int numberOfElements() override { return componentCounter("ELEMENTS"); }
    int numberOfConstraints() override { return componentCounter("CONSTRAINTS"); }
    int numberOfMaterials() override { return componentCounter("MATERIALS"); }
    int numberOfControls() override { return componentCounter("CONTROLS"); }
    int numberOfTrackers() override { return componentCounter("TRACKERS"); }
    int numberOfLoads() override { return componentCounter("LOADS"); }
    int numberOfAmplitudes() override { return componentCounter("AMPLITUDES"); }
    int numberOfContactSurfaces() override { return componentCounter("CONTACT_SURFACES"); }
    int numberOfRigidBodies() override { return componentCounter("RIGID_BODIES"); }

    int componentCounter(const std::string& keyword);

private:
    // What distinguishes one block kind from another while reading.
    struct BlockKind {
        const char* keyword;
        const char* blockName; // for the header messages; null for untyped blocks
        bool numbered;         // data lines start with a number (nodes, elements)
        std::string* type;     // where the header's type name goes
    };
    // Reads up to the next data line of the kind and returns its tokens; false
    // at the end of the file.
    bool nextDataLine(const BlockKind& kind, std::vector<Token>& tokens);
    std::vector<Token> tokenizeLine(std::string& line);
    std::string lineText() const { return "At line " + std::to_string(currentLine); }
    // The number that leads a node or element line, truncated toward zero;
    // a value that no int can hold is refused with "<kind> number <value> is
    // not a valid integer".
    static int componentNumber(const Token& token, const char* kind);
    // Refuses a counted component whose line the pass could not use: the
    // counter takes every line of the block, the pass only lines that start
    // with a number (nodes, elements) or a word (the others).
    std::invalid_argument missingLine(const char* keyword, const char* what) const;

    // First line of the current pass that lay inside a block of the kind
    // looked for but did not start as its data lines do (0: none yet).
    int firstSkippedLine = 0;

    std::string currentElementType;
    std::string currentConstraintType;
    std::string currentMaterialType;
    std::string currentTrackerType;
    std::string currentAmplitudeType;
    bool inBlock = false;
    std::vector<std::string> blockKeywords;
    std::string delimiters;
};
