#include "recording/recorder.h"

#include "recording/capture_recorder.h"
#include "recording/file_owner.h"
#include "recording/recording.h"

#include <chrono>
#include <iostream>

namespace plc {

namespace {

const std::string HEADING = "# fins_plc recording: seconds, client, < received or > sent, frame\n";

// The form of recording.h.
class TextRecorder : public Recorder {
public:
    TextRecorder(FileOwner &&opened, const std::string &path, std::uint64_t maxBytes)
        : Recorder(path, maxBytes), file(std::move(opened))
    {
        write(HEADING);
    }

    void open(unsigned, const Endpoint &, const Endpoint &) override {}

    void add(unsigned client, char direction, const Bytes &bytes) override
    {
        const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
        if (!hasEnded())
            write(recordedLine(seconds, client, direction, bytes) + "\n");
    }

    void close(unsigned, Ending) override {}

private:
    using Clock = std::chrono::steady_clock;

    void write(const std::string &text)
    {
        if (!hasRoom(text.size()))
            return;
        std::fwrite(text.data(), 1, text.size(), file.get());
        settle(file.get());
    }

    FileOwner         file;
    Clock::time_point start = Clock::now();
};

bool isCaptureName(const std::string &path)
{
    const std::string ending = ".pcap";
    return path.size() > ending.size() && path.compare(path.size() - ending.size(), ending.size(), ending) == 0;
}

} // namespace

bool Recorder::hasRoom(std::size_t size)
{
    if (written + size > limit)
        end("it has reached its size; --record-limit allows more");
    else
        written += size;
    return !isAtEnd;
}

void Recorder::settle(std::FILE *file)
{
    if (std::fflush(file) != 0 || std::ferror(file) != 0)
        end("it cannot be written any more");
}

void Recorder::end(const std::string &reason)
{
    isAtEnd = true;
    std::cerr << "fins_plc: the recording " << name << " ends: " << reason << std::endl;
}

std::shared_ptr<Recorder> makeRecorder(const std::string &path, std::uint64_t maxBytes)
{
    FileOwner file(std::fopen(path.c_str(), "wbe"));
    if (!file)
        return nullptr;
    if (isCaptureName(path))
        return std::make_shared<CaptureRecorder>(std::move(file), path, maxBytes);
    return std::make_shared<TextRecorder>(std::move(file), path, maxBytes);
}

} // namespace plc
