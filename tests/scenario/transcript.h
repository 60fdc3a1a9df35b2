#ifndef TESTS_SCENARIO_TRANSCRIPT_H
#define TESTS_SCENARIO_TRANSCRIPT_H

#include <string>
#include <vector>

// Transcripts of a session between driver and PLC, typed by hand, one line a step:
//   > hex        the driver hands out exactly these bytes
//   < hex = r    these bytes are the reply, which the driver answers with r (1 when "= r" is left out)
//   .            the driver has nothing to send
// Hex digits may be grouped with spaces as the fields are; FINS stands for these four letters. A reply without any
// digit is an empty one.

using Bytes = std::vector<unsigned char>;

struct TranscriptStep {
    char        kind;    // '>', '<' or '.'
    Bytes       bytes;   // the request or the reply
    int         result;  // what the driver answers to a reply
    std::string text;    // the line itself
};

/// The bytes that `text` stands for. Throws std::invalid_argument on anything but hex digits, spaces and FINS.
Bytes fromHex(const std::string &text);

/// `bytes` as hex digits, for messages.
std::string toHex(const Bytes &bytes);

std::vector<TranscriptStep> parseTranscript(const std::string &transcript);

#endif
