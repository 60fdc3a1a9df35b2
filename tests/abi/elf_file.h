#ifndef TESTS_ABI_ELF_FILE_H
#define TESTS_ABI_ELF_FILE_H

#include <link.h>

#include <string>
#include <vector>

/// A shared library on disk, of the pointer width and byte order of this program.
class ElfFile {
public:
    /// Throws std::runtime_error when `path` is no such file.
    explicit ElfFile(const std::string &path);

    /// Names that other modules can see and that this file defines, sorted.
    std::vector<std::string> exportedNames() const;

    /// Names that this file takes from other modules, sorted.
    std::vector<std::string> importedNames() const;

    /// The libraries that this file needs (DT_NEEDED), in file order.
    std::vector<std::string> neededLibraries() const;

    std::vector<ElfW(Phdr)> segments() const;
    std::vector<ElfW(Dyn)>  dynamicEntries() const;

    /// The version definitions of this file: their number. A plugin without symbol versions has none.
    int versionDefinitions() const;

private:
    template <class Record> std::vector<Record> records(std::size_t offset, std::size_t size) const;
    std::vector<ElfW(Shdr)>  sections() const;
    std::vector<ElfW(Sym)>   dynamicSymbols() const;
    std::string              text(std::size_t offset) const;
    std::size_t              stringsOf(unsigned sectionType) const;
    std::vector<std::string> names(bool defined) const;

    std::vector<char> bytes_;
    ElfW(Ehdr)        header_;
};

#endif
