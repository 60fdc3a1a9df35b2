#include "console/served_output.h"

#include "common/descriptor.h"

#include <chrono>
#include <condition_variable>
#include <iostream>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace plc {

namespace {

const std::size_t WAITING_MAX_BYTES = 1024 * 1024;
const std::chrono::seconds LAST_WAIT(1);

} // namespace

struct ServedOutput::Queue {
    explicit Queue(bool isError) : fd(isError ? STDERR_FILENO : STDOUT_FILENO),
                                   name(isError ? "standard error" : "standard output")
    {
    }

    int                     fd;
    const char             *name;
    std::mutex              mutex;
    std::condition_variable changed;
    std::string             waiting;
    unsigned long           dropped = 0; // lines behind those that wait
    bool                    isEnding = false;
    bool                    isDone = false;
};

ServedOutput::ServedOutput(std::ostream &stream)
    : queue(std::make_shared<Queue>(&stream == &std::cerr)), replaced(stream), original(stream.rdbuf(this))
{
    std::thread([shared = queue] { run(*shared); }).detach();
}

ServedOutput::~ServedOutput()
{
    replaced.rdbuf(original);
    std::unique_lock<std::mutex> lock(queue->mutex);
    queue->isEnding = true;
    queue->changed.notify_all();
    queue->changed.wait_for(lock, LAST_WAIT, [this] { return queue->isDone; });
}

void ServedOutput::run(Queue &queue)
{
    std::unique_lock<std::mutex> lock(queue.mutex);
    for (;;) {
        queue.changed.wait(lock, [&queue] { return !queue.waiting.empty() || queue.isEnding; });
        if (queue.waiting.empty())
            break;
        std::string text;
        text.swap(queue.waiting);
        if (queue.dropped > 0)
            text += "fins_plc: " + std::to_string(queue.dropped) +
                    " lines are lost here: " + queue.name + " is not read fast enough\n";
        queue.dropped = 0;
        lock.unlock();
        writeAll(queue.fd, text); // what nobody can take any more is lost
        lock.lock();
    }
    queue.isDone = true;
    queue.changed.notify_all();
}

ServedOutput::int_type ServedOutput::overflow(int_type character)
{
    const char single = traits_type::to_char_type(character);
    xsputn(&single, 1);
    return character;
}

// Lines are kept or dropped whole.
std::streamsize ServedOutput::xsputn(const char *text, std::streamsize count)
{
    line.append(text, static_cast<std::size_t>(count));
    if (line.empty() || line.back() != '\n')
        return count;
    const std::lock_guard<std::mutex> lock(queue->mutex);
    if (queue->dropped > 0 || queue->waiting.size() + line.size() > WAITING_MAX_BYTES)
        ++queue->dropped;
    else
        queue->waiting += line;
    line.clear();
    queue->changed.notify_all();
    return count;
}

} // namespace plc
