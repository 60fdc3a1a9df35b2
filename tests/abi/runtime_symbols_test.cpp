#include <gtest/gtest.h>

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "elf_file.h"

// What libfins_runtime.so shows to the program that links it.

namespace {

using Names = std::vector<std::string>;

std::string demangled(const std::string &name)
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void *)> text(abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status),
                                                       std::free);
    return status == 0 ? text.get() : name;
}

/// The exported names as people read them, sorted.
Names exported(const std::string &path)
{
    Names names;
    for (const std::string &name : ElfFile(path).exportedNames())
        names.push_back(demangled(name));
    std::sort(names.begin(), names.end());
    return names;
}

/// What a name is of, such as the class of a table of virtual functions.
std::string subject(const std::string &name)
{
    for (const std::string begin : {"vtable for ", "typeinfo for ", "typeinfo name for "}) {
        if (name.compare(0, begin.size(), begin) == 0)
            return name.substr(begin.size());
    }
    return name;
}

} // namespace

TEST(RuntimeSymbolsAbi, NothingButTheLibrarysOwnNamesIsVisible)
{
    for (const std::string &name : exported(FINS_RUNTIME_LIBRARY)) {
        EXPECT_EQ(0U, subject(name).find("fins::")) << name;
        EXPECT_NE(0U, subject(name).find("fins::Plc::Impl")) << name;
        EXPECT_NE(0U, subject(name).find("fins::Handle::Target")) << name;
    }
}

TEST(RuntimeSymbolsAbi, EveryFunctionOfTheHeadersIsVisible)
{
    const Names names = exported(FINS_RUNTIME_LIBRARY);
    for (const std::string begin : {
             "fins::Config::ofProject(", "fins::Config::plcsOf(", "fins::ConfigError::ConfigError(", "fins::Handle::operator=(",
             "fins::Handle::~Handle(", "fins::Operation::cancel(", "fins::Plc::open(", "fins::Plc::Plc(fins::Plc&&",
             "fins::Plc::operator=(", "fins::Plc::~Plc(", "fins::Plc::close(", "fins::Plc::watch(",
             "fins::Plc::snapshot(", "fins::Plc::write(", "fins::Plc::writeRecipe(", "fins::Plc::readRecipe(",
             "fins::Plc::tags(", "fins::Plc::recipes(", "fins::Plc::state(", "fins::Plc::onState(", "fins::Plc::onMessage(", "fins::Plc::readyFd(",
             "fins::Plc::dispatch(", "fins::isDone(", "fins::text(fins::Fate)", "fins::text(fins::Phase)",
             "fins::text(fins::Quality)", "typeinfo for fins::ConfigError", "typeinfo for fins::NameError"}) {
        const auto found = std::find_if(names.begin(), names.end(), [&](const std::string &name) {
            return name.compare(0, begin.size(), begin) == 0;
        });
        EXPECT_NE(names.end(), found) << begin;
    }
}

TEST(RuntimeSymbolsAbi, DriverIsNotLinked)
{
    const Names needed = ElfFile(FINS_RUNTIME_LIBRARY).neededLibraries();
    EXPECT_EQ(0, std::count(needed.begin(), needed.end(), "libomron_fins_ethernet.so"));
}
