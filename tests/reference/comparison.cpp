#include "comparison.h"

#include <cstdio>
#include <cstring>

#include "player.h"
#include "sequence.h"

namespace reference {

namespace {

struct Options {
    Int sequences = 2000;
    Int seed = 1;
};

// The first lines in which two texts differ.
Text textDifference(const Text &expected, const Text &seen)
{
    if (expected == seen)
        return Text();
    std::size_t at = 0;
    while (at < expected.size() && at < seen.size() && expected[at] == seen[at])
        ++at;
    const std::size_t start = at == 0 ? 0 : expected.rfind('\n', at - 1) + 1;
    return "expected: " + expected.substr(start, expected.find('\n', at) - start) + "\n"
         + "    seen: " + seen.substr(start, seen.find('\n', at) - start);
}

Text memoryDifference(const RuntimeMemory &expected, const RuntimeMemory &seen)
{
    for (std::size_t i = 0; i < 2 * RECIPE_WORDS; ++i)
        if (expected.recipe[i] != seen.recipe[i])
            return "recipe buffer, byte " + std::to_string(i) + ": expected " + std::to_string(expected.recipe[i])
                 + ", seen " + std::to_string(seen.recipe[i]);
    return Text();
}

struct Outcome {
    std::size_t step = 0;
    Text        difference; // empty: none
};

void clear(const RuntimeMemory &memory)
{
    std::memset(memory.block, 0, BLOCK_SIZE);
    std::memset(memory.recipe, 0, 2 * RECIPE_WORDS);
}

Outcome compare(const Sequence &sequence, Subject &subject)
{
    Bytes block(BLOCK_SIZE), recipe(2 * RECIPE_WORDS);
    const RuntimeMemory expectedMemory{block.data(), recipe.data(), [] { return false; }};
    const RuntimeMemory seenMemory = subject.memory();
    clear(expectedMemory);
    clear(seenMemory);
    ReferenceDriver expectedDriver;
    Player expected(expectedDriver, expectedMemory, sequence.nesting);
    Player seen(subject.fresh(), seenMemory, sequence.nesting);
    Outcome outcome;
    for (; outcome.step < sequence.operations.size(); ++outcome.step) {
        const Operation &operation = sequence.operations[outcome.step];
        const Text wanted = expected.play(operation);
        outcome.difference = textDifference(wanted, seen.play(operation));
        if (outcome.difference.empty())
            outcome.difference = memoryDifference(expectedMemory, seenMemory);
        if (outcome.difference.empty())
            outcome.difference = subject.stateDifference(expectedDriver);
        if (!outcome.difference.empty())
            return outcome;
    }
    return outcome;
}

// Leaves out whatever the difference does not need.
Sequence shortened(Sequence sequence, Subject &subject)
{
    sequence.operations.resize(compare(sequence, subject).step + 1);
    for (std::size_t run = sequence.operations.size(); run > 0; run /= 2) {
        for (std::size_t at = 0; at + run < sequence.operations.size();) {
            Sequence shorter = sequence;
            const auto from = shorter.operations.begin() + static_cast<std::ptrdiff_t>(at);
            shorter.operations.erase(from, from + static_cast<std::ptrdiff_t>(run));
            if (compare(shorter, subject).difference.empty())
                at += run;
            else
                sequence = shorter;
        }
    }
    sequence.operations.resize(compare(sequence, subject).step + 1);
    return sequence;
}

void report(std::uint32_t seed, const Sequence &sequence, Subject &subject)
{
    const Sequence shortest = shortened(sequence, subject);
    std::printf("seed %u differs; nested reads %d; the shortest form:\n", seed, shortest.nesting);
    for (const Operation &operation : shortest.operations)
        std::printf("  %s\n", describe(operation).c_str());
    std::printf("%s\n", compare(shortest, subject).difference.c_str());
}

bool parse(int argc, char **argv, Options &options)
{
    for (int i = 1; i < argc; i += 2) {
        const bool isSequences = std::strcmp(argv[i], "--sequences") == 0;
        const bool isSeed = std::strcmp(argv[i], "--seed") == 0;
        Int *value = isSequences ? &options.sequences : &options.seed;
        if ((!isSequences && !isSeed) || i + 1 == argc || !toNumber(argv[i + 1], *value) || *value < 0)
            return false;
    }
    return options.sequences > 0;
}

} // namespace

int compareSequences(int argc, char **argv, Subject &subject)
{
    Options options;
    if (!parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: %s [--sequences COUNT] [--seed FIRST], both decimal; COUNT at least 1\n", argv[0]);
        return 2;
    }
    std::size_t steps = 0;
    for (Int i = 0; i < options.sequences; ++i) {
        const auto     seed = static_cast<std::uint32_t>(options.seed) + static_cast<std::uint32_t>(i);
        const Sequence sequence = randomSequence(seed);
        steps += sequence.operations.size();
        if (!compare(sequence, subject).difference.empty()) {
            report(seed, sequence, subject);
            return 1;
        }
    }
    std::printf("%d sequences, %zu steps, no difference\n", options.sequences, steps);
    return 0;
}

} // namespace reference
