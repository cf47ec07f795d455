#include "ForceLog.h"

#include "Node.h"

void ForceLog::replay() {
    for (const Entry& e : items)
        e.node->addLogged(e.family, e.first, e.v[0], e.v[1], e.v[2]);
    items.clear();
}
