#ifndef RUNTIME_SESSION_DIAGNOSIS_H
#define RUNTIME_SESSION_DIAGNOSIS_H

#include "session/runtime.h"

#include <string>
#include <vector>

// Why there is no link, in plain words, and what to try next.

struct Peer {
    std::string host;
    std::string port;
    std::string address; // "" if the host name could not be resolved
    Millis      timeout;
};

struct Diagnosis {
    std::string              problem;
    std::vector<std::string> remedies; // the likeliest first
};

/// `stray` are the first bytes that came instead of a FINS/TCP reply, if any did.
Diagnosis diagnose(const LinkTrouble &trouble, const Peer &peer, const std::string &stray);

/// "48 54 54 50 'HTTP'", what is not printable as a dot.
std::string strayText(const std::string &stray);

#endif
