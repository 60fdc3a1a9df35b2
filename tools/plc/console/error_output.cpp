#include "console/error_output.h"

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

struct ErrorOutput::Queue {
    std::mutex              mutex;
    std::condition_variable changed;
    std::string             waiting;
    unsigned long           dropped = 0; // lines behind those that wait
    bool                    isEnding = false;
    bool                    isDone = false;
};

ErrorOutput::ErrorOutput() : queue(std::make_shared<Queue>()), original(std::cerr.rdbuf(this))
{
    std::thread([shared = queue] { run(*shared); }).detach();
}

ErrorOutput::~ErrorOutput()
{
    std::cerr.rdbuf(original);
    std::unique_lock<std::mutex> lock(queue->mutex);
    queue->isEnding = true;
    queue->changed.notify_all();
    queue->changed.wait_for(lock, LAST_WAIT, [this] { return queue->isDone; });
}

void ErrorOutput::run(Queue &queue)
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
                    " lines are lost here: standard error is not read fast enough\n";
        queue.dropped = 0;
        lock.unlock();
        writeAll(STDERR_FILENO, text); // what nobody can take any more is lost
        lock.lock();
    }
    queue.isDone = true;
    queue.changed.notify_all();
}

ErrorOutput::int_type ErrorOutput::overflow(int_type character)
{
    const char single = traits_type::to_char_type(character);
    xsputn(&single, 1);
    return character;
}

// Lines are kept or dropped whole.
std::streamsize ErrorOutput::xsputn(const char *text, std::streamsize count)
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
