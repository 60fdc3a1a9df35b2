#include "fins/node_table.h"

namespace plc {

namespace {

enum : unsigned { NODE_MAX = 254, ALLOCATED_FIRST = 239, ALLOCATED_LAST = 254 };

} // namespace

TcpError NodeTable::assign(std::uint32_t requested, unsigned *node)
{
    if (requested > NODE_MAX)
        return TCP_NODE_OUT_OF_RANGE;
    if (requested == serverNode)
        return TCP_NODE_IS_SERVER;
    if (used.size() >= clientLimit)
        return TCP_ALL_IN_USE;
    if (used.count(requested) != 0)
        return TCP_NODE_IN_USE;
    unsigned chosen = requested;
    for (unsigned free = ALLOCATED_FIRST; chosen == 0 && free <= ALLOCATED_LAST; ++free)
        if (free != serverNode && used.count(free) == 0)
            chosen = free;
    if (chosen == 0)
        return TCP_NO_NODE_LEFT;
    used.insert(chosen);
    *node = chosen;
    return TCP_OK;
}

} // namespace plc
