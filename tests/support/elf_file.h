// Reads what the tests need of a shared library's file: its symbols, relocations, segments and needed libraries.
#pragma once

#include <elf.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace support {

class ElfFile {
public:
    explicit ElfFile(const std::string &path) {
        std::ifstream in(path, std::ios::binary | std::ios::ate);
        bytes_.resize(in ? static_cast<std::size_t>(in.tellg()) : 0);
        in.seekg(0).read(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
        if (bytes_.size() < sizeof(Elf64_Ehdr) || std::memcmp(bytes_.data(), ELFMAG, SELFMAG) != 0) {
            throw std::runtime_error("no ELF file: " + path);
        }
        const auto header = table<Elf64_Ehdr>(0, 1).front();
        sections_ = table<Elf64_Shdr>(header.e_shoff, header.e_shnum);
        segments_ = table<Elf64_Phdr>(header.e_phoff, header.e_phnum);
    }

    const std::vector<Elf64_Phdr> &segments() const { return segments_; }

    // SHT_DYNSYM or SHT_SYMTAB: what is defined here; of the static table only names with the project's prefixes, since
    // instrumented libraries hold a hundred thousand others.
    std::map<std::string, Elf64_Sym> definedSymbols(std::uint32_t tableType) const {
        std::map<std::string, Elf64_Sym> symbols;
        for (const Elf64_Shdr &section : sections_) {
            if (section.sh_type != tableType) {
                continue;
            }
            for (const Elf64_Sym &symbol : table<Elf64_Sym>(section.sh_offset, section.sh_size / sizeof(Elf64_Sym))) {
                const char *name = string(section.sh_link, symbol.st_name);
                const bool kept =
                    tableType == SHT_DYNSYM ? *name != 0 : hasPrefix(name, "rvx") || hasPrefix(name, "l9_");
                if (symbol.st_shndx != SHN_UNDEF && kept) {
                    symbols[name] = symbol;
                }
            }
        }
        return symbols;
    }

    std::set<std::string> definedDynamicNames() const {
        std::set<std::string> names;
        for (const auto &[name, symbol] : definedSymbols(SHT_DYNSYM)) {
            names.insert(name);
        }
        return names;
    }

    bool hasDynamicTag(std::int64_t tag) const {
        bool found = false;
        forEachDynamicEntry([&](const Elf64_Shdr &, const Elf64_Dyn &entry) { found |= entry.d_tag == tag; });
        return found;
    }

    // Names that the dynamic section gives for a tag: DT_NEEDED, DT_SONAME.
    std::set<std::string> dynamicStrings(std::int64_t tag) const {
        std::set<std::string> names;
        forEachDynamicEntry([&](const Elf64_Shdr &section, const Elf64_Dyn &entry) {
            if (entry.d_tag == tag) {
                names.insert(string(section.sh_link, static_cast<std::uint32_t>(entry.d_un.d_val)));
            }
        });
        return names;
    }

    // The loader's base-relative relocations: address of the word -> what it will point to.
    std::map<std::uint64_t, std::uint64_t> relativeRelocations() const {
        std::map<std::uint64_t, std::uint64_t> relocations;
        for (const Elf64_Shdr &section : sections_) {
            if (section.sh_type == SHT_RELA) {
                for (const auto &entry : table<Elf64_Rela>(section.sh_offset, section.sh_size / sizeof(Elf64_Rela))) {
                    if (ELF64_R_TYPE(entry.r_info) == R_X86_64_RELATIVE) {
                        relocations[entry.r_offset] = static_cast<std::uint64_t>(entry.r_addend);
                    }
                }
            }
        }
        return relocations;
    }

    // The file's bytes of a virtual address range.
    std::vector<std::uint8_t> bytesAt(std::uint64_t address, std::uint64_t count) const {
        for (const Elf64_Phdr &segment : segments_) {
            if (segment.p_type == PT_LOAD && address >= segment.p_vaddr &&
                address + count <= segment.p_vaddr + segment.p_filesz) {
                const auto begin =
                    bytes_.begin() + static_cast<std::ptrdiff_t>(address - segment.p_vaddr + segment.p_offset);
                return {begin, begin + static_cast<std::ptrdiff_t>(count)};
            }
        }
        throw std::runtime_error("address outside the file");
    }

private:
    template <class Visit> void forEachDynamicEntry(const Visit &visit) const {
        for (const Elf64_Shdr &section : sections_) {
            if (section.sh_type == SHT_DYNAMIC) {
                for (const auto &entry : table<Elf64_Dyn>(section.sh_offset, section.sh_size / sizeof(Elf64_Dyn))) {
                    visit(section, entry);
                }
            }
        }
    }

    template <class T> std::vector<T> table(std::uint64_t offset, std::uint64_t count) const {
        if (offset + count * sizeof(T) > bytes_.size()) {
            throw std::runtime_error("truncated ELF file");
        }
        std::vector<T> entries(count);
        std::memcpy(entries.data(), bytes_.data() + offset, count * sizeof(T));
        return entries;
    }

    static bool hasPrefix(const char *name, const char *prefix) {
        return std::strncmp(name, prefix, std::strlen(prefix)) == 0;
    }

    const char *string(std::uint32_t section, std::uint32_t offset) const {
        return bytes_.data() + sections_.at(section).sh_offset + offset;
    }

    std::vector<char> bytes_;
    std::vector<Elf64_Shdr> sections_;
    std::vector<Elf64_Phdr> segments_;
};

} // namespace support
