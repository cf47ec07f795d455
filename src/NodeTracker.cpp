#include "NodeTracker.h"

#include "Node.h"

#include <stdexcept>

void NodeTracker::parseOstrel(std::vector<Token> tokens,
                              const std::unordered_map<int, std::shared_ptr<Node>>& nodesByNumber,
                              const std::unordered_map<int, std::shared_ptr<Element>>& /*elementsByNumber*/) {
    std::size_t i = 0;
    while (i < tokens.size()) {
        const std::string word = tokenText(tokens[i]);
        if (tokens[i].isAWord() && word == "NODES") {
            ++i;
            for (; i < tokens.size() && tokens[i].isANumber(); ++i) {
                const int number = entityNumber(tokens[i]);
                const auto found = nodesByNumber.find(number);
                if (found == nodesByNumber.end())
                    throw std::invalid_argument("Node " + std::to_string(number) + " is not found");
                nodes.push_back(found->second);
            }
        } else if (tokens[i].isAWord() && word == "DIRECTION") {
            if (direction != UNSET) throw std::invalid_argument("Tracker direction has been already set");
            if (i + 1 >= tokens.size()) throw std::invalid_argument("Tracker direction is missing");
            const std::string value = tokenText(tokens[i + 1]);
            if (value == "X")
                direction = 0;
            else if (value == "Y")
                direction = 1;
            else if (value == "Z")
                direction = 2;
            else
                throw std::invalid_argument("Input " + value + " is not recognized as direction");
            i += 2;
        } else if (tokens[i].isAWord() && word == "TYPE") {
            if (type != UNSET) throw std::invalid_argument("Tracker type has been already set");
            if (i + 1 >= tokens.size()) throw std::invalid_argument("Tracker type is missing");
            const std::string value = tokenText(tokens[i + 1]);
            if (value == "FORCE")
                type = FORCE;
            else if (value == "MOMENT")
                type = MOMENT;
            else if (value == "POSITION")
                type = POSITION;
            else if (value == "VELOCITY")
                type = VELOCITY;
            else if (value == "ACCELERATION")
                type = ACCELERATION;
            else if (value == "CONTACTFORCE")
                type = CONTACTFORCE;
            else
                throw std::invalid_argument("Input " + value + " is not a recognized type");
            i += 2;
        } else {
            throw std::invalid_argument("Input " + word + " is not a tracker parameter");
        }
    }
}

NodeTracker::Getter NodeTracker::quantity() const {
    static const Getter force[3] = {&Node::getXForce, &Node::getYForce, &Node::getZForce};
    static const Getter position[3] = {&Node::getX_pos, &Node::getY_pos, &Node::getZ_pos};
    static const Getter velocity[3] = {&Node::getX_vel, &Node::getY_vel, &Node::getZ_vel};
    static const Getter acceleration[3] = {&Node::getX_acc, &Node::getY_acc, &Node::getZ_acc};
    static const Getter contact[3] = {&Node::getXContactForce, &Node::getYContactForce,
                                      &Node::getZContactForce};
    if (direction < 0 || direction > 2) return nullptr;
    switch (type) {
    case FORCE:
        return force[direction];
    case POSITION:
        return position[direction];
    case VELOCITY:
        return velocity[direction];
    case ACCELERATION:
        return acceleration[direction];
    case CONTACTFORCE:
        return contact[direction];
    default:
        return nullptr; // MOMENT and an unset type have no column values
    }
}

void NodeTracker::printCSV(double time) {
    if (time == 0.0) {
        file << "Time ";
        for (const auto& n : nodes)
            file << ", Node " << n->getNumber();
        file << ", Total \n";
    }
    char text[64];
    formatTime(time, text);
    file << text;
    double total = 0.0;
    if (const Getter get = quantity()) {
        for (const auto& n : nodes) {
            const double value = ((*n).*get)();
            file << ", " << value;
            total += value;
        }
    }
    file << ", " << total << std::endl;
}
