#include "elf_file.h"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <stdexcept>

ElfFile::ElfFile(const std::string &path)
{
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamsize size = file ? static_cast<std::streamsize>(file.tellg()) : 0;
    bytes_.resize(static_cast<std::size_t>(size));
    file.seekg(0);
    if (!file.read(bytes_.data(), size) || bytes_.size() < sizeof header_)
        throw std::runtime_error(path + " cannot be read or is too short");
    std::memcpy(&header_, bytes_.data(), sizeof header_);
    const unsigned char width = sizeof(void *) == 8 ? ELFCLASS64 : ELFCLASS32;
    if (std::memcmp(header_.e_ident, ELFMAG, SELFMAG) != 0 || header_.e_ident[EI_CLASS] != width)
        throw std::runtime_error(path + " is no library of this machine's pointer width");
}

template <class Record> std::vector<Record> ElfFile::records(std::size_t offset, std::size_t size) const
{
    if (offset > bytes_.size() || size > bytes_.size() - offset)
        throw std::runtime_error("a table lies outside the file");
    std::vector<Record> table(size / sizeof(Record));
    if (!table.empty())
        std::memcpy(table.data(), bytes_.data() + offset, table.size() * sizeof(Record));
    return table;
}

std::vector<ElfW(Shdr)> ElfFile::sections() const
{
    return records<ElfW(Shdr)>(header_.e_shoff, header_.e_shnum * sizeof(ElfW(Shdr)));
}

std::vector<ElfW(Phdr)> ElfFile::segments() const
{
    return records<ElfW(Phdr)>(header_.e_phoff, header_.e_phnum * sizeof(ElfW(Phdr)));
}

std::vector<ElfW(Dyn)> ElfFile::dynamicEntries() const
{
    for (const ElfW(Shdr) &section : sections()) {
        if (section.sh_type == SHT_DYNAMIC)
            return records<ElfW(Dyn)>(section.sh_offset, section.sh_size);
    }
    throw std::runtime_error("the file has no dynamic section");
}

std::vector<ElfW(Sym)> ElfFile::dynamicSymbols() const
{
    for (const ElfW(Shdr) &section : sections()) {
        if (section.sh_type == SHT_DYNSYM)
            return records<ElfW(Sym)>(section.sh_offset, section.sh_size);
    }
    throw std::runtime_error("the file has no dynamic symbols");
}

// File offset of the string table that the section of `sectionType` refers to.
std::size_t ElfFile::stringsOf(unsigned sectionType) const
{
    const std::vector<ElfW(Shdr)> all = sections();
    for (const ElfW(Shdr) &section : all) {
        if (section.sh_type == sectionType)
            return all.at(section.sh_link).sh_offset;
    }
    throw std::runtime_error("the file has no such section");
}

std::string ElfFile::text(std::size_t offset) const
{
    const auto begin = bytes_.begin() + static_cast<std::ptrdiff_t>(std::min(offset, bytes_.size()));
    return std::string(begin, std::find(begin, bytes_.end(), '\0'));
}

std::vector<std::string> ElfFile::names(bool defined) const
{
    const std::size_t strings = stringsOf(SHT_DYNSYM);
    std::vector<std::string> found;
    for (const ElfW(Sym) &symbol : dynamicSymbols()) {
        const bool isLocal = ELF64_ST_BIND(symbol.st_info) == STB_LOCAL;
        if (!isLocal && (symbol.st_shndx != SHN_UNDEF) == defined)
            found.push_back(text(strings + symbol.st_name));
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::string> ElfFile::exportedNames() const { return names(true); }

std::vector<std::string> ElfFile::importedNames() const { return names(false); }

std::vector<std::string> ElfFile::neededLibraries() const
{
    const std::size_t strings = stringsOf(SHT_DYNAMIC);
    std::vector<std::string> libraries;
    for (const ElfW(Dyn) &entry : dynamicEntries()) {
        if (entry.d_tag == DT_NEEDED)
            libraries.push_back(text(strings + entry.d_un.d_val));
    }
    return libraries;
}

int ElfFile::versionDefinitions() const
{
    for (const ElfW(Dyn) &entry : dynamicEntries()) {
        if (entry.d_tag == DT_VERDEFNUM)
            return static_cast<int>(entry.d_un.d_val);
    }
    return 0;
}
