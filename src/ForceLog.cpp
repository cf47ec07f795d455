#include "ForceLog.h"

#include "Node.h"

void ForceLog::replay(std::vector<ForceLog>& logs) {
    for (int round = 0; round < 2; ++round)
        for (std::size_t b = 0; b < logs.size(); ++b) {
            const int block = static_cast<int>(b);
            for (const Entry& e : logs[b].items)
                // Round 0: blocks after the node's owner; round 1: before it.
                if ((round == 0) == (block > e.owner))
                    e.node->addLogged(e.family, e.first, e.v[0], e.v[1], e.v[2]);
        }
    for (auto& log : logs)
        log.items.clear();
}
