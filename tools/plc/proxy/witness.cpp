#include "proxy/witness.h"

#include "recording/recording.h"
#include "words/frame_words.h"

#include <iostream>

namespace plc {

void Witness::begin(const Recorder::Endpoint &clientEnd, const Recorder::Endpoint &plcEnd)
{
    hasBegun = true;
    std::cout << '#' << id << " begins: " << clientEnd << " to " << plcEnd << std::endl;
    if (settings.recorder)
        settings.recorder->open(id, clientEnd, plcEnd);
}

void Witness::see(char direction, const std::uint8_t *bytes, std::size_t count)
{
    FrameSplitter &frames = direction == '<' ? requests : replies;
    frames.append(bytes, count);
    Bytes piece;
    for (auto result = frames.next(&piece); result != FrameSplitter::Result::NEED_MORE; result = frames.next(&piece)) {
        note(direction, piece);
        if (result == FrameSplitter::Result::FOREIGN)
            noteForeign(direction, piece);
        else
            std::cout << '#' << id << ' ' << direction << ' ' << frameWords(piece) << std::endl;
    }
}

void Witness::end(Ending ending)
{
    if (!hasBegun)
        return;
    for (FrameSplitter *const frames : {&requests, &replies}) {
        const Bytes rest = frames->takeRest();
        if (!rest.empty())
            note(frames == &requests ? '<' : '>', rest);
    }
    if (settings.recorder)
        settings.recorder->close(id, ending);
    std::cout << '#' << id << (ending == Ending::CLOSED ? " ends" : " ends: reset") << std::endl;
}

void Witness::note(char direction, const Bytes &bytes) const
{
    if (settings.recorder)
        settings.recorder->add(id, direction, bytes);
    if (settings.isTraced)
        std::cerr << '#' << id << ' ' << direction << ' ' << hexText(bytes) << std::endl;
}

void Witness::noteForeign(char direction, const Bytes &bytes)
{
    if (!hasForeign)
        std::cout << '#' << id << ' ' << direction << ' ' << bytes.size()
                  << " bytes are no FINS; they and later ones are passed on as they are" << std::endl;
    hasForeign = true;
}

} // namespace plc
