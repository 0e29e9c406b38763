#include "authoring/lua/tokens.h"

#include <doctest/doctest.h>
#include <lua.hpp>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// "1:name local" for each, with its line.
static std::string tokens_of(std::string_view text)
{
    static constexpr const char* kinds[] = {"end", "name", "number", "text", "sign"};
    token_reader r = read_tokens(text);
    std::string all;
    for (source_token token = next_token(r); token.kind != token_end; token = next_token(r))
        all += (all.empty() ? "" : "|") + std::to_string(token.line) + ":" + kinds[token.kind] + " "
            + std::string(token.text);
    return all;
}

TEST_CASE("a line of a source is parted into names, numbers, texts and signs")
{
    CHECK(tokens_of("local x_1=a.b..'c' -- d")
        == "1:name local|1:name x_1|1:sign =|1:name a|1:sign .|1:name b|1:sign ..|1:text 'c'");
    CHECK(tokens_of("a==b~=c<=d//e::f::")
        == "1:name a|1:sign ==|1:name b|1:sign ~=|1:name c|1:sign <=|1:name d|1:sign //|1:name e|1:sign ::|1:name "
           "f|1:sign ::");
    CHECK(tokens_of("a[b[1]]") == "1:name a|1:sign [|1:name b|1:sign [|1:number 1|1:sign ]|1:sign ]");
    CHECK(tokens_of("") == "");
    CHECK(tokens_of(" \t\n\v\f\r\n") == "");
}

TEST_CASE("numbers go as far as the language's own reader takes them")
{
    CHECK(tokens_of("1 .5 5. 1e5 1E-5 1e+5 0x1F 0x.8p-3 3..4")
        == "1:number 1|1:number .5|1:number 5.|1:number 1e5|1:number 1E-5|1:number 1e+5|1:number 0x1F|1:number 0x.8p-3"
           "|1:number 3..4");
    CHECK(tokens_of("1-2") == "1:number 1|1:sign -|1:number 2");
    CHECK(tokens_of("0xep-1") == "1:number 0xep-1"); // not 0xe minus
    CHECK(tokens_of("0xe-1") == "1:number 0xe|1:sign -|1:number 1");
}

TEST_CASE("comments and texts may be long ones, of any level")
{
    CHECK(tokens_of("a --[[ b\n]=] ]] c") == "1:name a|2:name c");
    CHECK(tokens_of("a --[==[ ]] ]=] \n\n ]==] c --[=d\ne") == "1:name a|3:name c|4:name e");
    CHECK(tokens_of("[[a\nb]]c") == "2:text [[a\nb]]|2:name c");
    CHECK(tokens_of("[==[ ]=] ]==]") == "1:text [==[ ]=] ]==]");
    CHECK(tokens_of("a --[[ b") == "1:name a");
}

TEST_CASE("texts hold quotes, line ends and blanks behind a backslash")
{
    CHECK(tokens_of(R"("a\"b"'c"'d)") == R"(1:text "a\"b"|1:text 'c"'|1:name d)");
    CHECK(tokens_of("\"a\\\\\"b") == "1:text \"a\\\\\"|1:name b");
    CHECK(tokens_of("'a\\\nb' c") == "2:text 'a\\\nb'|2:name c");
    CHECK(tokens_of("'a\\z \n\n b' c") == "3:text 'a\\z \n\n b'|3:name c");
    CHECK(tokens_of("'a\nb") == "1:text 'a|2:name b");
    CHECK(tokens_of("'a\\") == "1:text 'a\\");
}

TEST_CASE("every kind of line end counts once")
{
    CHECK(tokens_of("a\nb\r\nc\rd\n\re\n\nf") == "1:name a|2:name b|3:name c|4:name d|5:name e|7:name f");
}

TEST_CASE("a mark of UTF-8 and a line for a shell are passed over")
{
    CHECK(tokens_of("\xef\xbb\xbf"
                    "a")
        == "1:name a");
    CHECK(tokens_of("#!/bin/sh try(1,0,2)\na") == "2:name a");
    CHECK(tokens_of("\xef\xbb\xbf#x") == "");
}

static std::string number_said(std::string_view text)
{
    const number_token number = number_of_token(text);
    return !number.is_number ? "none" : (number.is_whole ? "whole " : "") + std::to_string(number.value);
}

TEST_CASE("numbers mean what they mean in the language")
{
    CHECK(number_said("12") == "whole 12.000000");
    CHECK(number_said("1.") == "1.000000");
    CHECK(number_said(".5") == "0.500000");
    CHECK(number_said("2e3") == "2000.000000");
    CHECK(number_said("0x1F") == "whole 31.000000");
    CHECK(number_said("0xffffffffffffffff") == "whole -1.000000"); // goes round
    CHECK(number_said("0x.8p1") == "1.000000");
    CHECK(number_said("9223372036854775808") == "9223372036854775808.000000"); // no integer any more
    CHECK(std::isinf(number_of_token("1e999").value));
    for (const char* wrong : {"0x", "3a", "1e", "1..2", "0xg", "1.2.3", "."})
        CHECK(number_said(wrong) == "none");
}

// ---- Lua's own reader ---------------------------------------------------------------------------------

static int add_bytes(lua_State*, const void* bytes, size_t size, void* all)
{
    static_cast<std::string*>(all)->append(static_cast<const char*>(bytes), size);
    return 0;
}

// The compiled program, with the lines of its instructions. Empty: it does not compile.
static std::string compiled(const std::string& text)
{
    std::string bytes;
    lua_State* L = luaL_newstate();
    if (luaL_loadbuffer(L, text.data(), text.size(), "=source") == LUA_OK)
        lua_dump(L, add_bytes, &bytes, 0);
    lua_close(L);
    return bytes;
}

// Nothing but the tokens, each on its line.
static std::string tokens_alone(const std::string& text)
{
    token_reader r = read_tokens(text);
    std::string alone;
    uint32_t line = 1;
    for (source_token token = next_token(r); token.kind != token_end; token = next_token(r)) {
        const auto ends = static_cast<uint32_t>(std::count(token.text.begin(), token.text.end(), '\n'));
        for (; line + ends < token.line; ++line)
            alone += '\n';
        alone += std::string(token.text) + " ";
        line = token.line;
    }
    return alone;
}

TEST_CASE("the sources of our shows are the same programs for Lua when nothing but their tokens is left")
{
    namespace fs = std::filesystem;
    size_t count = 0;
    for (const char* folder : {"/productions", "/share/brimlow"}) {
        for (const fs::directory_entry& entry :
            fs::recursive_directory_iterator(BRIMLOW_SOURCE_DIR + std::string(folder))) {
            if (entry.path().extension() != ".lua")
                continue;
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            INFO(entry.path().string());
            REQUIRE(compiled(text) != "");
            CHECK(compiled(tokens_alone(text)) == compiled(text));
            ++count;
        }
    }
    CHECK(count > 20);
}
