// Forces that an element adds to a node its thread may not add to at once,
// kept in the order they are made and added later, in a fixed order.
//
// The element pass runs blocks of consecutive elements. A node belongs to the
// first block (in element order) whose elements use it: that block adds to it
// directly. A later block's force on it (a neighbour sharing it, or a contact
// element pushing it) comes after the owner's in element order; an earlier
// block's (only a contact element pushing a node it found) comes before it.
// After the pass the logs are added in two rounds, each block by block: first
// the forces of blocks after a node's owner, then those of blocks before it.
// Every node so receives its forces in one fixed order: its owner's, the
// later blocks' in element order, the earlier blocks' in element order.
//
// The threads run chunks of consecutive blocks, each chunk in block order on
// one thread. A block adds at once to the nodes of its chunk's earlier
// blocks, whose own forces are already in, and logs its forces on the nodes
// of earlier chunks (which may be running at the same time) and of later
// blocks. Within a chunk the direct forces come in block order, and the
// logged ones, all from later chunks, follow in block order: whatever the
// chunks, every node receives its forces in the order above, and every sum
// is the same bit for bit. One thread runs one chunk of all the blocks and
// logs only the pushes of earlier blocks.
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
    // The first block of the chunk the calling thread runs: the chunk's
    // blocks run in order on this thread, others may run at the same time.
    static inline thread_local int chunkStart = 0;

    // Whether a force of the active block on a node that `owner` owns goes to
    // the log (see above).
    static bool logs(int owner) { return owner > activeBlock || owner < chunkStart; }

    void add(Node* node, int owner, Family family, int first, double a, double b, double c) {
        items.push_back(Entry{node, owner, family, first, {a, b, c}});
    }
    // Adds the logged contributions of the logs of blocks 0, 1, ... to their
    // nodes in the two rounds above, and empties the logs (keeping their room).
    static void replay(std::vector<ForceLog>& logs);
    void clear() { items.clear(); }
    std::size_t size() const { return items.size(); }

private:
    struct Entry {
        Node* node;
        int owner;
        Family family;
        int first;
        double v[3];
    };
    std::vector<Entry> items;
};
