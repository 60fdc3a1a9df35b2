// A panel runtime with all of its link duties: panel_runtime LIBRARY ADDRESS PORT [--allow-mode-change]
// It shows the words that it watches and obeys one command a line: write A | store A B C (a recipe) | load | quit.
// One thread takes one job of the driver after the other to its end: a poll, a write, a block of a recipe. Commands are
// obeyed between jobs, and only after a poll; docs/interface.md says why.
#include "omron_fins_ethernet.h"

#include <QtCore/QStringList>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

enum { TAG = 1, RECIPE_WRITE = 60115, RECIPE_READ = 60116 };
enum { HANDSHAKE = 0, READ = 0x0101, WRITE = 0x0102, MODE_CHANGE = 0x0401 }; // FINS commands, which a handshake lacks
enum { REFUSED_WORD = -2, UNKNOWN = -1 }; // instead of a value: until the next connection; until it is polled
enum Verdict { GOOD, REFUSED, SILENT, BROKEN }; // broken: the stream is out of step, or the PLC closes the connection
struct Shared { // the driver is given 32-bit addresses of these, so they lie below 4 GiB
    quint8  block[60117];
    quint16 recipe[3]; // HR 10, DM 200, DM 201; low byte first, like this machine
    QMutex  mutex;     // one thread, so it need not be taken: nobody else looks at the two bytes meanwhile
};
static Shared *shared;
static void *library;
static struct Word { int address, value; } words[] = { { 100, UNKNOWN }, { 3000, UNKNOWN } }; // in DM
static FRAME_PRO request;             // of the job in progress, or of the last one
static QByteArray sent, reply, nodes; // nodes: the handshake reply of this connection
static QString info;                  // the driver's line for a log
static int tcp = -1, pauseMs = 100;   // the connection, -1: none; the pause before the next attempt to connect
static bool mayChangeMode;
#define DRIVER(name) reinterpret_cast<decltype(&(name))>(dlsym(library, #name))

static quint32 get16(const QByteArray &from, int at) { return quint8(from.at(at)) * 256u + quint8(from.at(at + 1)); }
static quint32 get32(const QByteArray &from, int at) { return get16(from, at) << 16 | get16(from, at + 2); }
static quint32 command() { return sent.size() < 28 ? quint32(HANDSHAKE) : get16(sent, 26); }
static quint32 endCode() { return get16(reply, 28) & 0xFF3F; } // bits 6 and 7 tell of errors in the CPU unit
static bool recipeRuns() { return shared->block[RECIPE_WRITE] != 0 || shared->block[RECIPE_READ] != 0; }

static void watch() // all words but the refused
{
    QList<KEY_ADDRESS> plan;
    KEY_ADDRESS item;
    item.requestTag = TAG;
    item.regType = "DM";
    item.count = 1;
    for (const Word &word : words) {
        item.address = word.address;
        if (word.value != REFUSED_WORD)
            plan.append(item);
    }
    DRIVER(intf_addrMerge)(plan);
}

// Only missing replies make the driver end its job and, with it, its link: its next request is a handshake, which
// stands for a poll. So nothing may be written until another poll is accepted: that of the word that is written.
static QString giveUp(const QString &outcome)
{
    reply.clear();
    while (DRIVER(intf_getSendFrame)(&request) == 1 && DRIVER(intf_dealRcvFrame)(reply, info) != 2) {}
    words[0].value = qMin<int>(words[0].value, UNKNOWN);
    return outcome;
}

static QString lose(const char *reason)
{
    close(tcp);
    tcp = -1;
    nodes.clear();
    giveUp(QString());
    shared->block[RECIPE_WRITE] = shared->block[RECIPE_READ] = 0; // else the next handshake would pass for a block
    for (Word &word : words)
        word.value = UNKNOWN;
    watch();
    std::printf("no link: %s; the values are the last known\n", reason);
    pauseMs = qMin(2 * pauseMs, 5000);
    return "unknown, the link was lost";
}

static void connectTo(const char *address, int port)
{
    const sockaddr_in plc = { AF_INET, htons(static_cast<quint16>(port)), { inet_addr(address) }, {} };
    tcp = socket(AF_INET, SOCK_STREAM, 0);
    const timeval second = { 1, 0 };
    setsockopt(tcp, SOL_SOCKET, SO_SNDTIMEO, &second, sizeof second); // bounds connect() and send()
    setsockopt(tcp, SOL_SOCKET, SO_RCVTIMEO, &second, sizeof second);
    if (connect(tcp, reinterpret_cast<const sockaddr *>(&plc), sizeof plc) != 0)
        lose("cannot connect");
}

// Sends the request and receives its reply, whole, whatever its segments.
static Verdict exchange()
{
    if (command() == HANDSHAKE && !nodes.isEmpty()) { // a connection is given one node address: never ask twice
        reply = nodes;
        return GOOD;
    }
    if (send(tcp, sent.constData(), static_cast<size_t>(sent.size()), MSG_NOSIGNAL) != sent.size())
        return BROKEN;
    for (int i = 0; i < 5; ++i) { // late replies to older requests come first; there are few
        char bytes[4096];
        reply.clear();
        const ssize_t got = recv(tcp, bytes, 16, MSG_WAITALL);
        if (got != 16)
            return got < 0 && errno == EAGAIN && command() != HANDSHAKE ? SILENT : BROKEN;
        reply.append(bytes, 16);
        const quint32 rest = get32(reply, 4) - 8; // huge, if the length is below 8
        if (get32(reply, 12) != 0 || rest > sizeof bytes
            || recv(tcp, bytes, rest, MSG_WAITALL) != static_cast<ssize_t>(rest))
            return BROKEN;
        reply.append(bytes, static_cast<int>(rest));
        if (command() == HANDSHAKE) {
            nodes = reply;
            return get32(reply, 8) == 1 && reply.size() == 24 ? GOOD : BROKEN;
        }
        if (get32(reply, 8) == 2 && reply.size() >= 30 && reply.at(25) == sent.at(25) && get16(reply, 26) == command())
            return endCode() == 0 ? GOOD : REFUSED;
    }
    return BROKEN;
}

// Takes the driver's next job to its end. Returns what went wrong, nothing if it went well.
static QString runJob()
{
    for (bool modeChanged = false;; modeChanged = modeChanged || command() == MODE_CHANGE) {
        request.count = 0; // as in a handshake: no word is served
        if (DRIVER(intf_getSendFrame)(&request) == 0)
            return QString(); // every word is refused
        sent = QByteArray(reinterpret_cast<const char *>(request.frame), request.sendLen);
        if (command() == MODE_CHANGE && !mayChangeMode) // it is never sent
            return giveUp("refused, the PLC's mode stays as it is");
        const Verdict verdict = exchange();
        if (verdict == BROKEN)
            return lose("the connection is broken");
        const QString refusal = verdict != REFUSED ? QString()
                                                   : QString("refused, %1").arg(endCode(), 4, 16, QChar('0'));
        if (command() == READ && verdict == REFUSED) // which the driver may take for data
            return giveUp(refusal);
        if (command() == WRITE && modeChanged && verdict != SILENT) // whose reply the driver rejects
            return giveUp(verdict == GOOD && recipeRuns() ? "cut short, store it again" : refusal);
        const qint32 result = DRIVER(intf_dealRcvFrame)(reply, info);
        if (result == 2)
            return lose("no reply");
        if (result == 1 && command() != MODE_CHANGE) // after which the write comes again, refused or not
            return verdict == REFUSED && recipeRuns() ? giveUp(refusal) : refusal; // the other blocks are not written
    }
}

static void pollWords() // once, and on until the word that is written is known or refused, or the link lost
{
    do {
        const QString refusal = runJob();
        for (Word &word : words) {
            if (tcp < 0 || word.address < request.address || word.address >= request.address + request.count)
                continue;
            quint8 bytes[2];
            DRIVER(intf_getData)(TAG, "DM", word.address, 1, bytes);
            const int value = refusal.isEmpty() ? bytes[0] + 256 * bytes[1] : REFUSED_WORD;
            const QString text = refusal.isEmpty() ? QString(" = %1").arg(value) : ": " + refusal;
            if (value != word.value)
                std::printf("DM %d%s\n", word.address, qPrintable(text));
            word.value = value;
            pauseMs = 100;
        }
        if (!refusal.isEmpty())
            watch();
    } while (tcp >= 0 && words[0].value == UNKNOWN);
}

static QString obey(const QStringList &line)
{
    bool good = line.size() <= 4;
    quint16 numbers[3] = {};
    for (int i = 1; i < line.size() && good; ++i)
        numbers[i - 1] = line.at(i).toUShort(&good);
    const QString form = good ? QString("%1 %2").arg(line.at(0)).arg(line.size() - 1) : QString();
    if (form != "write 1" && form != "store 3" && form != "load 0")
        return "not understood; write A, store A B C, load or quit, with numbers from 0 to 65535";
    if (words[0].value < 0)
        return "not sent, the word that is written cannot be read";
    std::memcpy(shared->recipe, numbers, form == "store 3" ? sizeof numbers : 0);
    if (form == "write 1") // the bytes low byte first, like this machine
        DRIVER(intf_setData)(TAG, "DM", words[0].address, 1, reinterpret_cast<const quint8 *>(numbers), 2);
    else
        shared->block[form == "store 3" ? RECIPE_WRITE : RECIPE_READ] = 1;
    QString trouble = runJob();
    while (trouble.isEmpty() && recipeRuns())
        trouble = runJob();
    if (!trouble.isEmpty())
        return trouble;
    if (form != "write 1")
        return QString("done, %1 %2 %3").arg(shared->recipe[0]).arg(shared->recipe[1]).arg(shared->recipe[2]);
    words[0].value = UNKNOWN; // read it back
    pollWords();
    return words[0].value == numbers[0] ? "done" : words[0].value < 0 ? "unknown, it cannot be read back" : "differs";
}

static void configure()
{
    void *wanted = reinterpret_cast<void *>(static_cast<quintptr>(0x20000000));
    void *memory = mmap(wanted, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    const auto low = [](const void *object) { return static_cast<qint32>(reinterpret_cast<quintptr>(object)); };
    if (memory == MAP_FAILED || reinterpret_cast<quintptr>(memory) > 0xF0000000u)
        std::exit((std::fprintf(stderr, "no memory below 4 GiB\n"), 3));
    shared = new (memory) Shared();
    qint32 status = 0;
    DRIVER(intf_setAddrValueChangeCallBack)([](qint32, qint32, QString, qint32) {}); // every accepted read is looked at
    DRIVER(intf_initProperty)(low(shared->block), 0, low(shared->recipe), &status, "1#0#0#3#64", low(&shared->mutex));
    QVector<_RCP_VAR_PRO> recipe;
    recipe << _RCP_VAR_PRO{ 1, TAG, "HR", 10, 1, 0, 0 } << _RCP_VAR_PRO{ 1, TAG, "DM", 200, 2, 1, 0 };
    DRIVER(intf_setRcpAddress)(recipe);
    watch();
}

int main(int argc, char **argv)
{
    if (argc < 4 || !(library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL)) || !dlsym(library, "intf_initProperty")) {
        std::fprintf(stderr, "usage: panel_runtime LIBRARY ADDRESS PORT [--allow-mode-change]\n");
        return 2;
    }
    mayChangeMode = argc > 4 && std::strcmp(argv[4], "--allow-mode-change") == 0;
    setvbuf(stdin, nullptr, _IONBF, 0); // poll() then sees every line that was not read
    setvbuf(stdout, nullptr, _IOLBF, 0);
    configure();
    static char *line; // grows as needed
    static size_t room;
    for (;;) {
        if (tcp < 0)
            connectTo(argv[2], std::atoi(argv[3]));
        if (tcp >= 0)
            pollWords();
        pollfd ready[2] = { { STDIN_FILENO, POLLIN, 0 }, { tcp, POLLRDHUP, 0 } };
        poll(ready, 2, tcp < 0 ? pauseMs : 50);
        if (ready[1].revents != 0)
            lose("the PLC has closed the connection");
        if (ready[0].revents == 0)
            continue;
        if (getline(&line, &room, stdin) < 0 || std::strcmp(line, "quit\n") == 0)
            return 0;
        const QString text = QString(line).simplified();
        std::printf("%s: %s\n", qPrintable(text), qPrintable(obey(text.split(' '))));
    }
}
