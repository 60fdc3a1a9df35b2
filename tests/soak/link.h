#ifndef TESTS_SOAK_LINK_H
#define TESTS_SOAK_LINK_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

// The way to a PLC, and what a test may do to the two.

namespace soak {

using Bytes = std::vector<std::uint8_t>;

/// What the run is to prove does not hold.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class Link {
public:
    virtual ~Link() = default;

    /// Opens a new connection.
    virtual void connect() = 0;
    virtual bool isUp() const = 0;

    /// Sends a request. Returns the reply to it; empty when none came.
    virtual Bytes exchange(const Bytes &request) = 0;

    /// Begins or ends all faults.
    virtual void setFaults(bool isOn) = 0;

    /// Lets the PLC's own program change a word.
    virtual void change(const std::string &type, int address, int value) = 0;

    /// The PLC's words, asked for without the driver.
    virtual std::vector<int> words(const std::string &type, int address, int count) = 0;

    /// The PLC's process, at rest; 0 when it is this one.
    virtual int peer() { return 0; }
};

} // namespace soak

#endif
