#ifndef TESTS_FUZZ_INPUT_H
#define TESTS_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

// What every fuzz target shares: its entry point, the input read as a sequence of choices, and the stop at a finding.

/// The entry point of a target: one input. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// Ends the process as a finding unless `holds`.
inline void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "finding: %s\n", what);
    std::abort();
}

/// The bytes of one input. Behind the end every byte is 0, so that a cut input is an input, too.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t *data, std::size_t size) : data_(data), left_(size) {}

    bool isEmpty() const { return left_ == 0; }

    std::uint8_t byte()
    {
        if (left_ == 0)
            return 0;
        --left_;
        return *data_++;
    }

    /// 0 to `most`, at most 255.
    int upTo(int most) { return byte() % (most + 1); }

    /// A number as a runtime may pass it: one byte selects a small one, a border, 16 bits or 32 bits.
    std::int32_t number()
    {
        const int choice = byte();
        if (choice < 160)
            return choice;
        if (choice < 176)
            return 159 - choice;
        if (choice < 176 + BORDER_COUNT)
            return BORDERS[choice - 176];
        return static_cast<std::int32_t>(choice < 240 ? bits(2) : bits(4));
    }

    /// The same, but above `most` the remainder.
    std::int32_t count(std::int32_t most)
    {
        const std::int32_t number = this->number();
        return number > most ? number % (most + 1) : number;
    }

    /// Up to `most` bytes.
    std::vector<std::uint8_t> bytes(std::size_t most)
    {
        const std::size_t taken = std::min(most, left_);
        const std::vector<std::uint8_t> result(data_, data_ + taken);
        data_ += taken;
        left_ -= taken;
        return result;
    }

    /// Up to `most` bytes as a text.
    std::string text(std::size_t most)
    {
        const std::vector<std::uint8_t> taken = bytes(most);
        return std::string(taken.begin(), taken.end());
    }

private:
    static constexpr int BORDER_COUNT = 40;
    static constexpr std::int32_t BORDERS[BORDER_COUNT] = {
        INT32_MIN,   INT32_MIN + 1, INT32_MAX,     INT32_MAX - 1, 0x40000000,  0x3FFFFFFF,  -0x40000000, -0x40000005,
        0x40000005,  0x10000000,    -0x10000000,   0x08000000,    INT32_MIN + 5, INT32_MIN + 16, INT32_MAX - 15, -15,
        65535,       65536,         32767,         32768,         -32768,      524287,      524288,      6143,
        495,         496,           512,           513,           514,         990,         991,         1024,
        1025,        229,           230,           255,           256,         -17,         -31,         7168};

    std::uint32_t bits(int bytes)
    {
        std::uint32_t value = 0;
        for (int i = 0; i < bytes; ++i)
            value = value << 8 | byte();
        return value;
    }

    const std::uint8_t *data_;
    std::size_t         left_;
};

#endif
