#include "faults/fault_rule.h"

#include <gtest/gtest.h>

// How faults are written: what is read from a text, what is wrong with it, and how it is shown again.

namespace {

std::string readAndShown(const std::string &text)
{
    plc::FaultRule rule;
    const std::string wrong = plc::parseFaultRule(text, &rule);
    return wrong.empty() ? rule.text() : "wrong: " + wrong;
}

} // namespace

TEST(FaultRule, IsShownAsItIsSet)
{
    const struct {
        const char *text;
        const char *shown;
    } rows[] = {
        {"delay", "delay=100"},
        {"drop@.5#3", "drop@0.5#3"},
        {"drop@0.00000012", "drop@0.00000012"},
        {"drop@0.999", "drop@0.999"},
        {"drop@1.0", "drop"},
        {"end-code=00c0", "end-code=00C0"},
        {"end-code=1103:command=0102,area=DM,from=100,to=199,client=10@0.5#3",
         "end-code=1103:command=0102,area=DM,from=100,to=199,client=10@0.5#3"},
        {"drop:to=7,area=WR,command=read", "drop:command=0101,area=WR,to=7"},
        {"drop:command=0x0104", "drop:command=0104"},
        {"drop:command=multi-read", "drop:command=0104"},
        {"drop:command=0X2101", "drop:command=2101"},
        {"drop:area=T,from=5,to=5", "drop:area=T,from=5,to=5"},
        {"drop:area=C,from=0", "drop:area=C"},
        {"drop:client=127.0.0.1", "drop:client=127.0.0.1"},
        {"drop:client=0:0:0:0:0:0:0:1", "drop:client=::1"},
        {"drop:client=254", "drop:client=254"},
        {"drop:after=0", "drop"},
        {"drop:after=1000000,on=request", "drop:after=1000000,on=request"},
        {"drop:on=reply", "drop"},
        {"end-code=2203:on=reply", "end-code=2203:on=reply"},
        {"end-code=2203:on=request", "end-code=2203"},
        {"tcp-error=3:client=10,after=2", "tcp-error=03:client=10,after=2"},
        {"refuse:client=::1", "refuse:client=::1"},
        {"cut", "cut=20"},
        {"cut=2000", "cut=2000"},
        {"reorder", "reorder"},
        {"wrong-node#1", "wrong-node#1"},
        {"rst:on=request", "rst:on=request"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(readAndShown(row.text), row.shown) << row.text;
}

TEST(FaultRule, SaysWhatIsWrong)
{
    const struct {
        const char *text;
        const char *wrong;
    } rows[] = {
        {"drop:", "'' is no aim; aims are command area from to client after on, as in drop:area=DM,from=100"},
        {"drop:area=DM,", "'' is no aim; aims are command area from to client after on, as in drop:area=DM,from=100"},
        {"drop:node=3", "'node' is no aim; aims are command area from to client after on, as in drop:area=DM,from=100"},
        {"drop:area=XY", "'XY' is no area; use one such as CIO WR HR AR DM T C"},
        {"drop:area=", "'' is no area; use one such as CIO WR HR AR DM T C"},
        {"drop:area=DM_bit", "'DM_bit' is no area; use one such as CIO WR HR AR DM T C"},
        {"drop:area=DM:0", "'DM:0' is no area; use one such as CIO WR HR AR DM T C"},
        {"drop:from=1", "from and to need an area; add one such as area=DM"},
        {"drop:to=1", "from and to need an area; add one such as area=DM"},
        {"drop:area=DM,from=2,to=1", "from=2 is behind to=1"},
        {"drop:area=DM,from=65536", "'65536' is no address; use 0 to 65535"},
        {"drop:area=DM,to=-1", "'-1' is no address; use 0 to 65535"},
        {"drop:client=0", "'0' is no client; use a node from 1 to 254 or an IP address"},
        {"drop:client=255", "'255' is no client; use a node from 1 to 254 or an IP address"},
        {"drop:client=panel", "'panel' is no client; use a node from 1 to 254 or an IP address"},
        {"drop:after=1000001", "'1000001' is no number of requests; use 0 to 1000000"},
        {"drop:on=both", "'both' is nothing that a fault is on; use on=request or on=reply"},
        {"short:on=request", "short is never on=request; both go with delay jitter drop end-code close rst"},
        {"silence:on=reply", "silence is never on=reply; both go with delay jitter drop end-code close rst"},
        {"drop:area=DM,area=WR", "area is given twice; set a second fault instead"},
        {"refuse:client=10", "refuse strikes connections; aim it with client=IP or after=N only"},
        {"refuse:command=read", "refuse strikes connections; aim it with client=IP or after=N only"},
        {"tcp-error=22:area=DM", "tcp-error strikes node exchanges; aim it with client or after=N only"},
        {"cut=0", "'0' is no value of cut; use 1 to 2000"},
        {"cut=2001", "'2001' is no value of cut; use 1 to 2000"},
        {"rst=1", "rst takes no value"},
        {"drop:area=DM@2", "'2' is no probability; use 0 to 1"},
        {"drop:area=DM#0", "'0' is no number of times; use 1 to 1000000"},
        {"end-code:area=DM", "end-code needs a value, such as end-code=1101"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(readAndShown(row.text), std::string("wrong: ") + row.wrong) << row.text;
}

TEST(FaultRule, NamesTheCommandsThatThereAre)
{
    for (const char *text : {"drop:command=", "drop:command=101", "drop:command=01011", "drop:command=Read"})
        EXPECT_NE(readAndShown(text).find("use four hexadecimal digits, or one of read write fill multi-read "
                                          "transfer run stop data connection status cycle-time clock set-clock "
                                          "loopback messages acquire take-over release clear-errors error-log "
                                          "clear-log force cancel-force"),
                  std::string::npos)
            << text;
}
