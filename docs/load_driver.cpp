// Reads two words of a PLC through the driver: load_driver LIBRARY ADDRESS PORT
// A panel runtime in its shortest form: one thread, one watch, one exchange at a time, and no reconnecting.
#include "omron_fins_ethernet.h"

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMutex>
#include <QtCore/QString>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

// What the driver keeps pointers to. They are passed as 32 bits, so this lies below 4 GiB. It is never freed.
struct RuntimeMemory {
    quint8  sharedBlock[60117]; // bytes 60115 and 60116 ask for a recipe write and a recipe read
    quint16 recipe[1024];       // words low byte first
    QMutex  mutex;              // guards the two bytes
};

static RuntimeMemory *mapLowMemory()
{
    void *wanted = reinterpret_cast<void *>(static_cast<quintptr>(0x20000000));
    void *memory = mmap(wanted, sizeof(RuntimeMemory), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED || reinterpret_cast<quintptr>(memory) > 0xF0000000u) {
        std::fprintf(stderr, "no memory below 4 GiB\n");
        std::exit(3);
    }
    return new (memory) RuntimeMemory();
}

static qint32 lowAddress(const void *object)
{
    return static_cast<qint32>(static_cast<quint32>(reinterpret_cast<quintptr>(object)));
}

template <typename Function>
static Function find(void *library, const char *name)
{
    void *function = dlsym(library, name);
    if (!function) {
        std::fprintf(stderr, "the library lacks %s\n", name);
        std::exit(2);
    }
    return reinterpret_cast<Function>(function);
}

static void onChange(qint32 stationNo, qint32 requestTag, QString regType, qint32 address)
{
    std::printf("changed: station %d tag %d %s %d\n", stationNo, requestTag, qPrintable(regType), address);
}

static int connectTo(const char *address, int port)
{
    sockaddr_in plc = {};
    plc.sin_family = AF_INET;
    plc.sin_port = htons(static_cast<quint16>(port));
    const int link = socket(AF_INET, SOCK_STREAM, 0);
    if (inet_pton(AF_INET, address, &plc.sin_addr) == 1
        && connect(link, reinterpret_cast<sockaddr *>(&plc), sizeof plc) == 0)
        return link;
    std::fprintf(stderr, "no link to %s port %d\n", address, port);
    std::exit(3);
}

// One reply, whole, whatever its segments: the big-endian length at offset 4 counts what follows it. Empty when a
// second passes without a byte, when the link ends or when the length is absurd.
static QByteArray receiveReply(int link)
{
    QByteArray reply;
    quint32 wanted = 8;
    while (static_cast<quint32>(reply.size()) < wanted) {
        pollfd ready = { link, POLLIN, 0 };
        if (poll(&ready, 1, 1000) != 1)
            return QByteArray();
        char bytes[512];
        const size_t room = std::min<size_t>(sizeof bytes, wanted - static_cast<quint32>(reply.size()));
        const ssize_t got = recv(link, bytes, room, 0);
        if (got <= 0)
            return QByteArray();
        reply.append(bytes, static_cast<int>(got));
        if (reply.size() != 8)
            continue;
        for (int i = 4; i < 8; ++i)
            wanted = (i == 4 ? 0 : wanted << 8) | static_cast<quint8>(reply.at(i));
        if (wanted > 4096)
            return QByteArray();
        wanted += 8;
    }
    return reply;
}

int main(int argc, char **argv)
{
    if (argc != 4) {
        std::fprintf(stderr, "usage: load_driver LIBRARY ADDRESS PORT\n");
        return 2;
    }
    void *library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (!library) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    const auto setCallback  = find<decltype(&intf_setAddrValueChangeCallBack)>(library,
                                                                               "intf_setAddrValueChangeCallBack");
    const auto initProperty = find<decltype(&intf_initProperty)>(library, "intf_initProperty");
    const auto addrMerge    = find<decltype(&intf_addrMerge)>(library, "intf_addrMerge");
    const auto getSendFrame = find<decltype(&intf_getSendFrame)>(library, "intf_getSendFrame");
    const auto dealRcvFrame = find<decltype(&intf_dealRcvFrame)>(library, "intf_dealRcvFrame");
    const auto getData      = find<decltype(&intf_getData)>(library, "intf_getData");

    RuntimeMemory *memory = mapLowMemory();
    qint32 status = 0;
    setCallback(onChange);
    initProperty(lowAddress(memory->sharedBlock), 0, lowAddress(memory->recipe), &status, "1#0#0#3#64",
                 lowAddress(&memory->mutex));

    KEY_ADDRESS watched;
    watched.requestTag = 1;
    watched.regType = QLatin1String("DM");
    watched.address = 100;
    watched.count = 2;
    QList<KEY_ADDRESS> addresses;
    addresses.append(watched);
    addrMerge(addresses);

    const int link = connectTo(argv[2], std::atoi(argv[3]));
    static FRAME_PRO request; // 2 KiB
    qint32 result = 8;
    // The first exchange is the handshake, the second the poll.
    while (result != 2 && !(result == 1 && request.regType == QLatin1String("DM")) && getSendFrame(&request) == 1) {
        const size_t length = static_cast<size_t>(request.sendLen);
        QByteArray reply;
        if (send(link, request.frame, length, MSG_NOSIGNAL) == request.sendLen)
            reply = receiveReply(link);
        QString info;
        result = dealRcvFrame(reply, info);
        std::printf("%s: %d\n", qPrintable(info), result);
    }
    close(link);
    if (result != 1) {
        std::fprintf(stderr, "no answer from the PLC\n");
        return 3;
    }

    quint8 words[4];
    getData(1, QLatin1String("DM"), 100, 2, words);
    std::printf("DM 100 = %d, DM 101 = %d\n", words[0] + 256 * words[1], words[2] + 256 * words[3]);
    return 0;
}
