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

/// A project with its PLCs, or one PLC, and what is shown of them.
struct PanelSource {
    std::string               project; // file; empty: none
    std::vector<fins::Config> plcs;
    std::vector<std::string>  items;   // given on the command line: cards in place of the project's screens
};

/// A screen: of a project, or cards.
struct PanelScreen {
    std::vector<Station *> stations; // of the same project
    std::string            title;
    const Screen          *screen; // null: cards
    std::vector<TagValue>  cards;

    /// Null if it is not watched.
    LiveValue *find(const TagValue &tag) const;

    /// Those of the tags that have a trend.
    std::vector<const LiveValue *> trendValues(const std::vector<TagValue> &tags) const;
};

class Panel {
public:
    /// Begins to connect to all. `folder` is where files are saved. Throws fins::ConfigError and fins::NameError.
    explicit Panel(const std::vector<PanelSource> &sources, const std::string &folder = "");

    ~Panel();
    Panel(const Panel &) = delete;
    Panel &operator=(const Panel &) = delete;

    std::deque<Station> &stations() { return stations_; }
    const std::vector<PanelScreen> &screens() const { return screens_; }

    /// The screen of that name in the project of another one; screens().size() if there is none.
    std::size_t findScreen(const PanelScreen &from, const std::string &name) const;

    /// The first screen of that name or title.
    std::size_t findScreen(const std::string &name) const;

    /// The courses of all values, at LiveValue::trend.
    const TrendStore &trends() const { return *trends_; }

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
    void addSource(const PanelSource &source, std::size_t &trends);
    StationListener listenerOf(Station &station, AlarmBook &book);
    void noteWrite(const Station &station, const WriteEnd &end);
    void noteRecipe(const Station &station, const RecipeEnd &end);
    void noteAlarms(Station &station, const AlarmBook &book, const AlarmEvents &events);
    void showPriority(Station &station, const AlarmBook &book, const TagValue &tag);
    void addCards(const std::vector<Station *> &stations, const std::vector<std::string> &items);

    std::deque<Station>      stations_;
    std::deque<ScreenBook>   books_;  // of each project
    std::deque<AlarmBook>    alarms_; // of each station
    std::optional<TrendStore> trends_;
    std::vector<PanelScreen> screens_;
    Journal                  journal_;
    Saver                    saver_;
    std::uint64_t            alarmRevision_ = 0;
    std::vector<std::string> ends_; // lines of writes that were not done, while closing
    bool                     isClosing_ = false;
};

#endif
