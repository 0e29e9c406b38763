// A source's text, token by token, as Lua's own reader parts it: for what has to know where in a text something stands.
//
// Pure. Texts that are no Lua are read on as far as they go: a text constant without its end goes to the end of its
// line, a comment without one to the end of everything.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

enum source_token_kind : uint8_t {
    token_end,    // nothing is left
    token_name,   // reserved words too
    token_number, // without a sign
    token_text,   // a text constant, long brackets too
    token_sign    // "(", "..", "=="
};

struct source_token {
    source_token_kind kind = token_end;
    uint32_t line = 1;     // where it ends, from 1
    std::string_view text; // of the source, as it stands there
};

struct token_reader {
    std::string_view text;
    size_t at = 0;
    uint32_t line = 1;
};

// Before the first token; a mark of UTF-8, and a first line that is for a shell ("#!"), are passed over.
token_reader read_tokens(std::string_view text);

source_token next_token(token_reader& r);

struct number_token {
    bool is_number = false; // false for "0x" or "3a"
    bool is_whole = false;  // Lua has an integer of it
    double value = 0;       // infinite where it is too large
};

number_token number_of_token(std::string_view text);
