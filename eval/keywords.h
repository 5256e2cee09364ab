// The keyword table of the lexer. Order carries the rule: the lexer takes the first entry
// that is a prefix of the text, not the longest, so longer operators stand before their
// prefixes ("<<=" before "<<" before "<").
#pragma once

#include <string>
#include <vector>

struct CKeyword {
    std::string text;
    int token;
    // Element type of a type name, direction of an opener or suffix, 6 * first + second
    // direction of a matrix operator; 0 otherwise.
    int code;
};

const std::vector<CKeyword>& KeywordTable();

// Length of the first keyword that is a prefix of `text` (0 when none), with the entry.
int MatchKeyword(const char* text, const CKeyword** out);
