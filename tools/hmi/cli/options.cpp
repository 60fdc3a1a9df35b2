#include "cli/options.h"

#include <CLI/CLI.hpp>

#include <iostream>

static const char DESCRIPTION[] =
    "A graphical operator panel for Omron PLCs that are reached by FINS/TCP.\n"
    "  fins_hmi HOST ITEM...          a card for each item, such as DM:0, CIO_bit:0.0:3 or DM:100/f32\n"
    "  fins_hmi --project FILE        the screens of a project, or cards of its tags\n"
    "  fins_hmi --project FILE TAG... cards of these tags";

static const char FOOTER[] =
    "Options of Qt work, too: -platform linuxfb shows the panel on a frame buffer, without X or Wayland.\n"
    "Exit codes: 0 the window was closed, 2 bad usage, a project with mistakes, or no screen to show it on, 3 closed\n"
    "while writes were under way: a line tells the fate of each.";

int parseOptions(int argc, char **argv, Options &options)
{
    CLI::App app(DESCRIPTION, "fins_hmi");
    app.set_version_flag("--version", "fins_hmi " FINS_VERSION, "Print the version and exit");
    app.footer(FOOTER);
    app.add_option("HOST ITEM", options.words, "the PLC, HOST or HOST:PORT, and items; with --project items alone")
        ->type_name("");
    app.add_option("--project", options.projects, "project file (TOML); several times for several PLCs")
        ->type_name("FILE")->allow_extra_args(false);
    app.add_option("--host", options.host, "another PLC than the project's")->type_name("HOST[:PORT]");
    app.add_option("--library", options.library, "driver library")->type_name("FILE");
    app.add_option("--screen", options.screen, "the screen that is shown first, by name or title")->type_name("NAME");
    app.add_option("--dpi", options.dotsPerInch, "resolution of a screen that tells a wrong one, in dots per inch, 20 to 2000")
        ->check(CLI::Range(20.0, 2000.0).description(""))->type_name("NUMBER");
    app.add_option("--font", options.fontPercent, "size of the font in %, 50 to 400; 100 by default")
        ->check(CLI::Range(50, 400).description(""))->type_name("INTEGER");
    app.add_option("--save-to", options.folder, "folder for files that are saved; the current one by default")
        ->type_name("FOLDER");
    app.add_flag("--full-screen", options.isFullScreen, "cover the whole screen");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &success) {
        return app.exit(success);
    } catch (const CLI::ParseError &error) {
        std::cerr << "fins_hmi: " << error.what() << "; see fins_hmi --help\n";
        return 2;
    }
    return -1;
}
