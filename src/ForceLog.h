// Forces that an element adds to a node its thread does not own, kept in the
// order they are made and added later, in that order.
//
// The element pass runs blocks of consecutive elements on all threads. A node
// belongs to the first block (in element order) whose elements use it: that
// block's thread adds to it directly, and no other thread writes it during
// the pass. Any other block (a neighbour sharing the node, or a contact
// element pushing a node it found) logs the contribution instead; after the
// pass the logs are added block by block. Since blocks are consecutive runs
// of elements, every node then receives its contributions in element order,
// the order of a one-thread pass, whatever the number of threads: results
// are the same bit for bit.
#pragma once

#include <cstddef>
#include <vector>

class Node;

// Each log has a cache line of its own: threads add to neighbouring logs at
// the same time.
class alignas(64) ForceLog {
public:
    // Which accumulator of the node an entry is for.
    enum Family : int { internal = 0, external = 1, contact = 2 };

    // The log the calling thread writes to during the element pass, and the
    // block it works on; no log outside the pass (every force is added at once).
    static inline thread_local ForceLog* active = nullptr;
    static inline thread_local int activeBlock = -1;

    // Room for `entries` contributions, so that a pass allocates nothing once
    // the logs have grown to what the model needs.
    void reserve(std::size_t entries) { items.reserve(entries); }
    void add(Node* node, Family family, int first, double a, double b, double c) {
        items.push_back(Entry{node, family, first, {a, b, c}});
    }
    // Adds every logged contribution to its node, in the order logged, and
    // empties the log (keeping its room).
    void replay();
    void clear() { items.clear(); }
    std::size_t size() const { return items.size(); }
    std::size_t capacity() const { return items.capacity(); }

private:
    struct Entry {
        Node* node;
        Family family;
        int first;
        double v[3];
    };
    std::vector<Entry> items;
};
