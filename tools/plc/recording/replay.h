#ifndef PLC_RECORDING_REPLAY_H
#define PLC_RECORDING_REPLAY_H

#include "recording/recording.h"

#include <istream>
#include <map>
#include <set>
#include <vector>

// Serves the replies of a recording. A request is in the recording if it differs from a recorded one in nothing but
// service ID and node addresses; these are put right in the reply. What was recorded several times is answered in the
// order of the recording, then with its last reply again. Node address exchanges are not replayed.

namespace plc {

class Replay {
public:
    /// Reads a recording, `name` being what messages call it. Returns an empty text, or "NAME:LINE: what is wrong".
    std::string load(std::istream &text, const std::string &name);

    /// Finds what goes out in answer to `request`, a whole FINS/TCP frame that carries a FINS command; an empty reply
    /// means that nothing does. Returns false, `reply` unchanged, if the request is not in the recording, and says so
    /// on standard error once for each.
    bool answer(const Bytes &request, Bytes *reply);

private:
    struct Reply {
        Bytes    bytes; // empty: the request was not answered
        unsigned requestSid;
    };
    struct Course {
        std::vector<Reply> replies;
        std::size_t        next = 0;
    };

    void take(const RecordedFrame &frame);
    void keep(const Bytes &request, const Bytes &reply);

    std::map<Bytes, Course>   courses;  // by requests without service ID and nodes
    std::map<unsigned, Bytes> open;     // by client: the request that has no reply yet; while loading
    std::set<Bytes>           reported;
};

} // namespace plc

#endif
