#ifndef PLC_CPU_ACCESS_RIGHT_H
#define PLC_CPU_ACCESS_RIGHT_H

#include <optional>

// The right to change the CPU unit's mode, clock and errors, which one device of the network may have for itself.

namespace plc {

/// A device of the FINS network.
struct FinsAddress {
    unsigned network = 0;
    unsigned node = 0;
    unsigned unit = 0;

    bool operator==(const FinsAddress &other) const
    {
        return network == other.network && node == other.node && unit == other.unit;
    }
};

/// As long as nobody holds the right, everybody has it. A holder that leaves the network keeps it.
class AccessRight {
public:
    /// Whose command is being carried out.
    void setAsking(const FinsAddress &device) { asking = device; }

    const std::optional<FinsAddress> &holder() const { return held; }
    bool isHeldByAnother() const { return held && !(*held == asking); }

    void take() { held = asking; }

    /// Does nothing if another one holds it.
    void release()
    {
        if (!isHeldByAnother())
            held.reset();
    }

private:
    FinsAddress                asking;
    std::optional<FinsAddress> held;
};

} // namespace plc

#endif
