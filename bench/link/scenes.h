#ifndef BENCH_LINK_SCENES_H
#define BENCH_LINK_SCENES_H

#include <vector>

// What the link benchmark plays; each prints its figures as lines of words, for bench/bars.py.

/// Paired rounds: in each, every client makes as many requests, one client after the other in turning order. Prints for
/// each turn: round, client, seconds and CPU seconds a request, changes delivered and left out. The clients NAME-2 are
/// those whose calling thread may run on a second core. Throws if changes are missing.
int rounds(int count, long requests, int changingWords);

/// Rounds of bare reads of 64 words, from this benchmark's own answerer and then from the PLC at each of the ports. Prints
/// for each: round, and the seconds of a read from each of them in this order.
int servers(int count, long requests, const std::vector<int> &ports);

/// Rounds of writes one at a time while the library polls nothing else. Prints for each: round, placing of the cores,
/// seconds of a bare round trip among many and, median, of a single one, of a write until it is accepted, and of one until
/// it is verified.
int writes(int count, int writes);

/// So many PLCs with 500 words each, polled ten times a second; a single one is polled as often as a hundred together.
/// Prints: PLCs, replies a second, CPU seconds a reply, KiB of resident memory for each further PLC, the same in
/// proportion to the processes that share it, and the median, the 99th percentile and the longest of the seconds from a
/// reply's sending to the callback with its sample.
int many(int plcs, int seconds);

#endif
