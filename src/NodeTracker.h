// History of one nodal quantity (force, moment, position, velocity,
// acceleration or contact force) in one global direction on a list of nodes:
// each row holds the time, the value at every node and their sum.
#pragma once

#include "Tracker.h"

class NodeTracker : public Tracker {
public:
    static constexpr int UNSET = -1;
    // Codes of the tracked quantity.
    static constexpr int FORCE = 3;
    static constexpr int MOMENT = 4;
    static constexpr int POSITION = 5;
    static constexpr int VELOCITY = 6;
    static constexpr int ACCELERATION = 7;
    static constexpr int CONTACTFORCE = 10;

    NodeTracker() = default;

    // <name> NODES n1 n2 ... DIRECTION <X|Y|Z> TYPE <quantity>, keywords in any order.
    void parseOstrel(std::vector<Token> tokens,
                     const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                     const std::unordered_map<int, std::shared_ptr<Element>>& elementsByNumber) override;
    // Writes "Time , Node a, Node b, Total " first when time is exactly 0, then
    // the "%f" time, each node's value and the total.
    //
    // Only a set direction together with one of the quantities FORCE, POSITION,
    // VELOCITY, ACCELERATION or CONTACTFORCE has per-node values. A MOMENT
    // tracker, and a tracker whose DIRECTION or TYPE was never given, writes
    // the time and a zero total on each row, under the full header: the file
    // still shows that the tracker ran and which nodes it was given.
    void printCSV(double time) override;

    const std::vector<std::shared_ptr<Node>>& getNodes() const { return nodes; }
    int getDirection() const { return direction; }
    int getType() const { return type; }

private:
    using Getter = double (Node::*)() const;
    // The node accessor of the chosen quantity and direction, or null when the
    // tracker has no per-node values.
    Getter quantity() const;

    std::vector<std::shared_ptr<Node>> nodes;
    int direction = UNSET;
    int type = UNSET;
};
