#ifndef PLC_VIEW_SCREEN_H
#define PLC_VIEW_SCREEN_H

#include "plants/plant.h"
#include "server/connection.h"
#include "view/terminal.h"

#include <string>
#include <vector>

// The live view as rows of text, for a screen of any size.

namespace plc {

struct ScreenClient {
    Connection::Client client;
    double             requestRate; // a second
};

struct ScreenWrite {
    std::string place;
    unsigned    value;
    unsigned    ageSeconds;
};

/// What the view shows.
struct ScreenState {
    std::string               address; // that is listened on
    unsigned                  node = 1;
    std::string               profile;
    std::string               mode;
    std::string               error;   // code of the worst one, with how many more there are; empty: none stands
    unsigned                  upSeconds = 0;
    std::size_t               clientLimit = 0;
    Stats                     stats;
    double                    requestRate = 0; // of all clients, a second
    std::string               faults;
    std::string               files;   // that are recorded or replayed
    std::vector<ScreenClient> clients;
    std::string               plant;   // empty: none
    std::vector<PlantValue>   values;  // of the plant
    std::vector<ScreenWrite>  writes;  // newest first
    std::string               typed;
    std::string               answer;  // to the last command
};

/// As many rows as the screen has, none longer than it is wide; sequences of colours not counted, which are there only
/// if `hasColour`.
std::vector<std::string> drawScreen(const ScreenState &state, TerminalSize size, bool hasColour);

} // namespace plc

#endif
