#ifndef HMI_MODEL_PANEL_H
#define HMI_MODEL_PANEL_H

#include "model/alarm_book.h"
#include "model/journal.h"
#include "model/saver.h"
#include "model/station.h"
#include "model/trend_store.h"

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// All that the panel shows, without a window: its PLCs and their screens.

/// One PLC: where it is, and what is shown of it.
struct PlcSource {
    fins::Config             config;
    std::vector<std::string> items; // given on the command line: cards in place of the project's screens
};

/// A screen of one PLC: of its project, or cards.
struct PanelScreen {
    Station              *station;
    std::string           title;
    const Screen         *screen; // null: cards
    std::vector<TagValue> cards;
};

class Panel {
public:
    /// Begins to connect to all. `folder` is where files are saved. Throws fins::ConfigError and fins::NameError.
    explicit Panel(const std::vector<PlcSource> &sources, const std::string &folder = "");

    ~Panel();
    Panel(const Panel &) = delete;
    Panel &operator=(const Panel &) = delete;

    std::deque<Station> &stations() { return stations_; }
    const std::vector<PanelScreen> &screens() const { return screens_; }

    /// The screen of that name of a station's project; screens().size() if there is none.
    std::size_t findScreen(const Station &station, const std::string &name) const;

    /// The first screen of that name or title.
    std::size_t findScreen(const std::string &name) const;

    /// The courses of a station's values, at LiveValue::trend.
    const TrendStore &trendsOf(const Station &station) const;

    /// Lets the alarms come whose delay is over, time go on in the trends, and files be told of; called often.
    void tick();

    /// An alarm of one of the PLCs.
    struct AlarmPlace {
        Station    *station;
        AlarmBook  *book;
        std::size_t alarm;

        const AlarmRule   &rule() const { return book->rule(alarm); }
        const AlarmStatus &status() const { return book->status(alarm); }
    };

    /// All that are not normal, those that nobody has seen first, of these the most urgent.
    std::vector<AlarmPlace> alarms();

    /// Alarms that cannot be judged, since their values are not good.
    std::size_t unknownAlarms() const;

    void acknowledge(const AlarmPlace &place);
    void acknowledgeAll();

    /// Another number after each change of an alarm, and of what can be judged.
    std::uint64_t alarmRevision() const { return alarmRevision_ + (static_cast<std::uint64_t>(unknownAlarms()) << 40); }

    Journal &journal() { return journal_; }
    std::uint64_t journalRevision() const { return journal_.size() + journal_.dropped(); }
    Saver &saver() { return saver_; }

    /// Ends all links. Returns a line for each write whose end nobody saw and that was not done.
    std::vector<std::string> close();

private:
    StationListener listenerOf(Station &station, AlarmBook &book, std::size_t index);
    void noteWrite(const Station &station, const WriteEnd &end);
    void noteRecipe(const Station &station, const RecipeEnd &end);
    void noteAlarms(Station &station, const AlarmBook &book, const AlarmEvents &events);
    void showPriority(Station &station, const AlarmBook &book, const TagValue &tag);
    void addCards(Station &station, const std::vector<std::string> &items);

    std::deque<Station>      stations_;
    std::deque<ScreenBook>   books_;  // of each station
    std::deque<AlarmBook>    alarms_; // of each station
    std::deque<TrendStore>   trends_; // of each station
    std::vector<PanelScreen> screens_;
    Journal                  journal_;
    Saver                    saver_;
    std::uint64_t            alarmRevision_ = 0;
    std::vector<std::string> ends_; // lines of writes that were not done, while closing
    bool                     isClosing_ = false;
};

#endif
