// The library's file keeps its promises: it exports what the list says, every stub reaches its implementation through
// its slot, and it asks the loader for nothing but what it may.
#include "support/elf_file.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <link.h>

#include <cctype>
#include <filesystem>
#include <sstream>

namespace {

namespace fs = std::filesystem;

std::string readText(const fs::path &path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Every text that stands between two marks.
std::vector<std::string> between(const std::string &text, const std::string &open, const std::string &close) {
    std::vector<std::string> found;
    for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
        at += open.size();
        found.push_back(text.substr(at, text.find(close, at) - at));
    }
    return found;
}

std::string withoutComments(const std::string &text) {
    std::string code;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t open = text.find("/*", at);
        code += text.substr(at, open - at);
        at = open == std::string::npos ? text.size() : text.find("*/", open) + 2;
    }
    return code;
}

// Every name of this library that a bracket follows.
std::vector<std::string> declaredNames(const std::string &code) {
    std::vector<std::string> names;
    for (std::size_t bracket = code.find('('); bracket != std::string::npos; bracket = code.find('(', bracket + 1)) {
        std::size_t begin = bracket;
        while (begin > 0 && (std::isalnum(static_cast<unsigned char>(code[begin - 1])) || code[begin - 1] == '_')) {
            --begin;
        }
        if (code.compare(begin, 3, "rvx") == 0) {
            names.push_back(code.substr(begin, bracket - begin));
        }
    }
    return names;
}

const fs::path sourceDir = RVXCV_SOURCE_DIR;

std::vector<std::string> listedNames() {
    return between(readText(sourceDir / "src/frame/exports.def"), "\nEXPORT(", ")");
}

std::set<std::string> asSet(const std::vector<std::string> &names) { return {names.begin(), names.end()}; }

class SharedLibrary : public testing::Test {
protected:
    const support::ElfFile file{RVXCV_LIBRARY_PATH};
    const std::vector<std::string> names = listedNames();
};

TEST_F(SharedLibrary, ListHeadersAndDynamicSymbolsAgree) {
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.size(), asSet(names).size()) << "a name is listed twice";
    EXPECT_EQ(asSet(names), file.definedDynamicNames());

    std::vector<std::string> declared;
    for (const auto &entry : fs::directory_iterator(sourceDir / "include/rvxcv")) {
        const auto found = declaredNames(withoutComments(readText(entry.path())));
        declared.insert(declared.end(), found.begin(), found.end());
    }
    EXPECT_EQ(declared.size(), asSet(declared).size()) << "a name is declared twice";
    EXPECT_EQ(asSet(names), asSet(declared));
}

TEST_F(SharedLibrary, UmbrellaHeaderIncludesEveryHeader) {
    const auto included = asSet(between(readText(sourceDir / "include/rvxcv.h"), "#include \"rvxcv/", "\""));
    std::set<std::string> present;
    for (const auto &entry : fs::directory_iterator(sourceDir / "include/rvxcv")) {
        present.insert(entry.path().filename());
    }
    EXPECT_EQ(included, present);
}

TEST_F(SharedLibrary, NeedsCoreLibraryAndSystemLibrariesOnly) {
    EXPECT_EQ(file.dynamicStrings(DT_SONAME), std::set<std::string>{"librvxcvl9.so.8"});
    std::set<std::string> allowed{"librvxcore.so.8", "libc.so.6", "libm.so.6"};
    const std::set<std::string> sanitizers{"libstdc++.so.6", "libgcc_s.so.1"};
    for (const std::string &name : file.dynamicStrings(DT_NEEDED)) {
#ifdef RVXCV_SANITIZED
        if (sanitizers.count(name) != 0) {
            continue;
        }
#endif
        EXPECT_EQ(allowed.count(name), 1U) << name;
    }
}

TEST_F(SharedLibrary, NothingIsBothWritableAndExecutable) {
    bool stackIsDeclared = false, relocatedIsProtected = false;
    for (const Elf64_Phdr &segment : file.segments()) {
        EXPECT_FALSE((segment.p_flags & PF_W) && (segment.p_flags & PF_X)) << "segment type " << segment.p_type;
        stackIsDeclared |= segment.p_type == PT_GNU_STACK && !(segment.p_flags & PF_X);
        relocatedIsProtected |= segment.p_type == PT_GNU_RELRO;
    }
    EXPECT_TRUE(stackIsDeclared);
    EXPECT_TRUE(relocatedIsProtected);
    EXPECT_FALSE(file.hasDynamicTag(DT_TEXTREL));
}

// endbr64; lea slot(%rip), %r11; jmp *(%r11) -- and the loader fills the slot with the implementation's address.
TEST_F(SharedLibrary, EveryStubJumpsThroughItsSlotToItsImplementation) {
    const auto exported = file.definedSymbols(SHT_DYNSYM);
    const auto internal = file.definedSymbols(SHT_SYMTAB);
    const auto relocations = file.relativeRelocations();
    constexpr std::uint64_t stubBytes = 14;

    for (const std::string &name : names) {
        SCOPED_TRACE(name);
        ASSERT_EQ(exported.count(name), 1U);
        ASSERT_EQ(internal.count(name + "_arraddr"), 1U);
        ASSERT_EQ(internal.count("l9_" + name), 1U);
        const Elf64_Sym &stub = exported.at(name);
        const Elf64_Sym &slot = internal.at(name + "_arraddr");
        const Elf64_Sym &implementation = internal.at("l9_" + name);

        EXPECT_EQ(ELF64_ST_TYPE(stub.st_info), STT_FUNC);
        ASSERT_EQ(stub.st_size, stubBytes);
        const auto code = file.bytesAt(stub.st_value, stubBytes);
        const std::vector<std::uint8_t> head(code.begin(), code.begin() + 7), tail(code.end() - 3, code.end());
        EXPECT_EQ(head, (std::vector<std::uint8_t>{0xf3, 0x0f, 0x1e, 0xfa, 0x4c, 0x8d, 0x1d}));
        EXPECT_EQ(tail, (std::vector<std::uint8_t>{0x41, 0xff, 0x23}));
        std::int32_t displacement;
        std::memcpy(&displacement, code.data() + 7, 4);
        EXPECT_EQ(stub.st_value + 11 + static_cast<std::uint64_t>(displacement), slot.st_value);

        EXPECT_EQ(ELF64_ST_BIND(slot.st_info), STB_LOCAL);
        ASSERT_EQ(relocations.count(slot.st_value), 1U);
        EXPECT_EQ(relocations.at(slot.st_value), implementation.st_value);
    }
}

// In the loaded library: the slots hold the implementations, lie in writable memory, and every name is found by dlsym.
TEST_F(SharedLibrary, SlotsAreFilledAndWritable) {
    void *library = dlopen(RVXCV_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    link_map *map = nullptr;
    ASSERT_EQ(dlinfo(library, RTLD_DI_LINKMAP, &map), 0);
    const auto internal = file.definedSymbols(SHT_SYMTAB);

    Elf64_Addr relroBegin = 0, relroEnd = 0;
    for (const Elf64_Phdr &segment : file.segments()) {
        if (segment.p_type == PT_GNU_RELRO) {
            relroBegin = segment.p_vaddr;
            relroEnd = segment.p_vaddr + segment.p_memsz;
        }
    }
    for (const std::string &name : names) {
        SCOPED_TRACE(name);
        EXPECT_EQ(reinterpret_cast<Elf64_Addr>(dlsym(library, name.c_str())), map->l_addr + internal.at(name).st_value);
        const Elf64_Addr slot = internal.at(name + "_arraddr").st_value;
        Elf64_Addr content;
        std::memcpy(&content, reinterpret_cast<const void *>(map->l_addr + slot), sizeof content);
        EXPECT_EQ(content, map->l_addr + internal.at("l9_" + name).st_value);
        EXPECT_FALSE(slot >= relroBegin && slot < relroEnd);
    }
    for (const char *hidden : {"rvxJumpIndexForMergedDLL", "l9_rvxcvGetLibVersion", "rvxcvGetLibVersion_arraddr"}) {
        EXPECT_EQ(dlsym(library, hidden), nullptr) << hidden;
    }
    dlclose(library);
}

} // namespace
