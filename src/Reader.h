// Abstract input reader: owns the deck stream, counts its lines, remembers the
// number of the line last read and can rewind.
#pragma once

#include "IOFile.h"

#include <fstream>
#include <memory>
#include <unordered_map>
#include <vector>

class Node;
class Element;
class Constraint;
class Load;
class Material;
class Amplitude;
class Tracker;
class ControlSet;
class Writer;
class ContactSurface;
class RigidBody;

class Reader : public IOFile {
public:
    ~Reader() override;
    void init(const std::filesystem::path& p) override;

    virtual std::shared_ptr<Node> getNextNode(const std::vector<std::shared_ptr<Constraint>>& constraints,
                                              const std::vector<std::shared_ptr<Load>>& loads) = 0;
    virtual std::shared_ptr<Element>
    getNextElement(const std::vector<std::shared_ptr<Node>>& nodes,
                   const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                   const std::vector<std::shared_ptr<Material>>& materials,
                   const std::vector<std::shared_ptr<Load>>& loads) = 0;
    virtual std::shared_ptr<Constraint>
    getNextConstraint(const std::vector<std::shared_ptr<Node>>& nodes,
                      const std::vector<std::shared_ptr<Amplitude>>& amplitudes) = 0;
    virtual std::shared_ptr<Load> getNextLoad(const std::vector<std::shared_ptr<Amplitude>>& amplitudes) = 0;
    virtual std::shared_ptr<Material> getNextMaterial() = 0;
    virtual std::shared_ptr<Amplitude> getNextAmplitude() = 0;
    virtual std::shared_ptr<Tracker>
    getNextTracker(const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                   const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) = 0;
    virtual std::shared_ptr<ContactSurface> getNextContactSurface() = 0;
    virtual std::shared_ptr<RigidBody>
    getNextRigidBody(const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber) = 0;
    virtual void getControlSet(std::unique_ptr<ControlSet>& controlSet) = 0;
    virtual std::shared_ptr<Writer> getWriter() = 0;
    virtual int numberOfNodes() = 0;
    virtual int numberOfElements() = 0;
    virtual int numberOfConstraints() = 0;
    virtual int numberOfMaterials() = 0;
    virtual int numberOfControls() = 0;
    virtual int numberOfTrackers() = 0;
    virtual int numberOfLoads() = 0;
    virtual int numberOfAmplitudes() = 0;
    virtual int numberOfContactSurfaces() = 0;
    virtual int numberOfRigidBodies() = 0;

    void countNbrOfLines();
    void rewindFile();
    int getNumberOfLines() const { return numberOfLines; }
    int getCurrentLine() const { return currentLine; }

protected:
    int numberOfLines = 0;
    int currentLine = 0;
    std::ifstream file;
};
