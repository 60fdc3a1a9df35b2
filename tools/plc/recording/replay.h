#ifndef PLC_RECORDING_REPLAY_H
#define PLC_RECORDING_REPLAY_H

#include "recording/recording.h"

#include <cstdint>
#include <istream>
#include <map>
#include <set>
#include <string>
#include <vector>

// Serves the replies of a recording. A request is in the recording if it differs from a recorded one in nothing but
// service ID and node addresses; these are put right in the reply. What was recorded several times is answered in the
// order of the recording, then with its last reply again. Node address exchanges are not replayed.

namespace plc {

class Replay {
public:
    /// Reads a recording as text, `name` being what messages call it. Returns an empty text, or "NAME:LINE: what is
    /// wrong".
    std::string load(std::istream &text, const std::string &name);

    /// Takes the next frame of a recording.
    void take(const RecordedFrame &frame);

    /// Whether there is nothing to be served.
    bool isEmpty() const { return courses.empty(); }

    /// Finds what goes out in answer to `request`, a whole FINS/TCP frame that carries a FINS command; an empty reply
    /// means that nothing does. Returns false, `reply` unchanged, if the request is not in the recording, and says so
    /// on standard error once for each.
    bool answer(const Bytes &request, Bytes *reply);

    /// What was asked: how many requests were in the recording, and in words each that was not, how often.
    struct Report {
        std::uint64_t            known = 0;
        std::uint64_t            unknown = 0;
        std::vector<std::string> requests; // "3 times READ DM 100, 2 words"
    };
    Report report() const;

private:
    struct Reply {
        Bytes    bytes; // empty: the request was not answered
        unsigned requestSid;
    };
    struct Course {
        std::vector<Reply> replies;
        std::size_t        next = 0;
    };
    struct OpenRequest {
        Bytes       key;
        std::size_t index; // of its reply in the course
    };

    void takeReply(unsigned client, const Bytes &reply);
    void noteUnknown(const Bytes &key);

    std::map<Bytes, Course>                      courses; // by requests without service ID and nodes
    std::map<unsigned, std::vector<OpenRequest>> open;    // by client: requests that have no reply yet; while loading
    std::set<Bytes>                              reported; // unknown requests, as in `courses`
    std::map<std::string, std::uint64_t>         unknown;  // in words, with how often they came
    std::uint64_t                                knownCount = 0;
    std::uint64_t                                unknownCount = 0;
};

} // namespace plc

#endif
