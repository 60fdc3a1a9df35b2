#include "panel_run.h"

// The tests' own ends keep their port while nobody listens on it: no other program gets it meanwhile.

namespace {

bool canBeTaken(int port)
{
    const int tried = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool taken = bind(tried, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
    close(tried);
    return taken;
}

class SimulatorPort : public PanelTest {};

TEST(PlayedPlc, KeepsItsPortWhenItStopsListening)
{
    PlayedPlc plc;
    EXPECT_TRUE(TcpClient::canConnect(plc.port));
    plc.stopListening();
    EXPECT_FALSE(TcpClient::canConnect(plc.port));
    EXPECT_FALSE(canBeTaken(plc.port));
}

TEST_F(SimulatorPort, StaysTheTestsBetweenTwoSimulators)
{
    start();
    const int first = port;
    plc->sendSignal(SIGKILL);
    EXPECT_EQ(plc->wait(), -SIGKILL);
    EXPECT_FALSE(TcpClient::canConnect(port));
    EXPECT_FALSE(canBeTaken(port));
    startAgain();
    EXPECT_EQ(port, first);
    EXPECT_TRUE(TcpClient::canConnect(port));
}

} // namespace
