#ifndef PLC_CPU_BYTES_H
#define PLC_CPU_BYTES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Bytes of frames. Every number on the wire is big-endian: high byte first.

namespace plc {

using Bytes = std::vector<std::uint8_t>;

inline void add8(Bytes &bytes, unsigned value) { bytes.push_back(static_cast<std::uint8_t>(value & 0xFFu)); }

inline void add16(Bytes &bytes, unsigned value)
{
    add8(bytes, value >> 8);
    add8(bytes, value);
}

inline void add32(Bytes &bytes, std::uint32_t value)
{
    add16(bytes, value >> 16);
    add16(bytes, value & 0xFFFFu);
}

/// A view of received bytes. Bytes past the end read as 0, so no offset can leave the buffer.
class Slice {
public:
    Slice(const std::uint8_t *first, std::size_t count) : data(first), length(count) {}
    explicit Slice(const Bytes &bytes) : data(bytes.data()), length(bytes.size()) {}

    std::size_t size() const { return length; }

    unsigned get8(std::size_t offset) const { return offset < length ? data[offset] : 0u; }

    unsigned get16(std::size_t offset) const { return get8(offset) << 8 | get8(offset + 1); }

    std::uint32_t get32(std::size_t offset) const { return get16(offset) << 16 | get16(offset + 2); }

    /// What follows the first `offset` bytes; nothing if there are fewer.
    Slice from(std::size_t offset) const
    {
        return offset < length ? Slice(data + offset, length - offset) : Slice(data, 0);
    }

    /// The first `count` bytes; all of them if there are fewer.
    Slice upTo(std::size_t count) const { return Slice(data, count < length ? count : length); }

    const std::uint8_t *begin() const { return data; }

private:
    const std::uint8_t *data;
    std::size_t         length;
};

} // namespace plc

#endif
