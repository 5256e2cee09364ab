#include "eval/keywords.h"

#include <cstring>

#include "grammar.h"

namespace {

const char kDirections[] = "xyztuv";
const char* const kTypeNames[] = {"i1", "i2", "i4", "i8", "n1", "n2", "n4",
                                  "n8", "u1", "u2", "u4", "u8", "r4", "r8"};
// Element type of each of kTypeNames: "u" is a synonym of "n".
const int kTypeCodes[] = {0, 1, 2, 3, 4, 5, 6, 7, 4, 5, 6, 7, 8, 9};

std::vector<CKeyword> BuildTable() {
    std::vector<CKeyword> t = {{"complex", TK_COMPLEX, 0},
                               {"quad", TK_COMPLEX, 0},
                               {"script", TK_SCRIPT, 0},
                               {".type", TK_DOTTYPE, 6}};
    for (int d = 0; d < 6; ++d) t.push_back({std::string(".n") + kDirections[d], TK_DOTN, d});
    t.push_back({"<<=", TK_SHIFT_LEFT_EQUAL, 0});
    t.push_back({">>=", TK_SHIFT_RIGHT_EQUAL, 0});
    for (const char* prefix : {"c", "q"})
        for (int k = 0; k < 14; ++k)
            t.push_back({prefix + std::string(kTypeNames[k]), TK_CDATA, kTypeCodes[k] + 10});
    for (const auto& [op, token] : {std::pair{"*", TK_STAR_MATRIX}, std::pair{"/", TK_DIV_MATRIX}})
        for (int a = 0; a < 6; ++a)
            for (int b = 0; b < 6; ++b)
                if (a != b)
                    t.push_back(
                        {std::string(op) + kDirections[a] + kDirections[b], token, 6 * a + b});
    for (int d = 0; d < 6; ++d) t.push_back({std::string(1, kDirections[d]) + "{", TK_OPEN_DIR, d});
    for (int d = 0; d < 6; ++d) t.push_back({std::string(1, char('1' + d)) + "{", TK_OPEN_DIR, d});
    t.push_back({"_{", TK_OPEN_ILEAVE, 0});
    for (int d = 0; d < 6; ++d)
        t.push_back({std::string("_") + kDirections[d] + "{", TK_OPEN_ILEAVE, d});
    for (int d = 0; d < 6; ++d)
        t.push_back({std::string("_") + char('1' + d) + "{", TK_OPEN_ILEAVE, d});
    for (int k = 0; k < 14; ++k) t.push_back({kTypeNames[k], TK_DATA, kTypeCodes[k]});
    const std::pair<const char*, int> ops[] = {{"!=", TK_NOT_EQUAL},
                                               {"==", TK_LOGIC_EQUAL},
                                               {"||", TK_DOUBLE_OR},
                                               {"&&", TK_DOUBLE_AND},
                                               {"++", TK_DOUBLE_PLUS},
                                               {"--", TK_DOUBLE_MINUS},
                                               {"<=", TK_LESS_AND_EQUAL},
                                               {">=", TK_GREATER_AND_EQUAL},
                                               {"*=", TK_STAR_EQUAL},
                                               {"/=", TK_DIVIDE_EQUAL},
                                               {"%=", TK_PERCENT_EQUAL},
                                               {"+=", TK_PLUS_EQUAL},
                                               {"-=", TK_MINUS_EQUAL},
                                               {"|=", TK_OR_EQUAL},
                                               {"&=", TK_AND_EQUAL},
                                               {"^=", TK_XOR_EQUAL},
                                               {"<<", TK_SHIFT_LEFT},
                                               {">>", TK_SHIFT_RIGHT},
                                               {".", TK_DOT},
                                               {"|", TK_OR},
                                               {"^", TK_HAT},
                                               {"~", TK_TILDA},
                                               {"&", TK_AND},
                                               {"+", TK_PLUS},
                                               {"-", TK_MINUS},
                                               {"=", TK_EQUAL},
                                               {"<", TK_LESS_THAN},
                                               {">", TK_GREATER_THAN},
                                               {"(", TK_OPEN_PAREN},
                                               {"[", TK_OPEN_SQUARE},
                                               {"{", TK_OPEN_CURLY},
                                               {")", TK_CLOSE_PAREN},
                                               {"]", TK_CLOSE_SQUARE},
                                               {"}", TK_CLOSE_CURLY},
                                               {":", TK_COLON},
                                               {";", TK_SEMICOLON},
                                               {",", TK_COMMA},
                                               {"!", TK_EXCLAMATION},
                                               {"*", TK_STAR},
                                               {"/", TK_DIVIDE},
                                               {"%", TK_PERCENT},
                                               {"?", TK_QUESTION}};
    for (const auto& [text, token] : ops) t.push_back({text, token, 0});
    return t;
}

}  // namespace

const std::vector<CKeyword>& KeywordTable() {
    static const std::vector<CKeyword> table = BuildTable();
    return table;
}

int MatchKeyword(const char* text, const CKeyword** out) {
    for (const CKeyword& k : KeywordTable()) {
        if (std::strncmp(text, k.text.c_str(), k.text.size()) == 0) {
            if (out) *out = &k;
            return static_cast<int>(k.text.size());
        }
    }
    return 0;
}
