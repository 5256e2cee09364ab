// CEval::Lex: the lexer of the equation language. At each position it measures six
// candidates (identifier, function, data name, script name, number, keyword) and takes the
// first rule that holds, in a fixed order: a name longer than anything known is new, a known
// data name wins ties against functions, a keyword wins every tie.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/report.h"
#include "core/script_space.h"
#include "eval/eval.h"
#include "eval/function_table.h"
#include "eval/keywords.h"
#include "grammar.h"

namespace {

// ASCII only: bytes above 127 are no letters, whatever the locale says.
bool IsLetter(unsigned char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
bool IsBlank(unsigned char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

size_t MeasureId(const char* p) {
    const auto* s = reinterpret_cast<const unsigned char*>(p);
    if (!(IsLetter(s[0]) || s[0] == '_')) return 0;
    size_t n = 1;
    while (IsLetter(s[n]) || IsDigit(s[n]) || s[n] == '_') ++n;
    return n;
}

size_t MeasureInt(const char* p) {
    size_t n = 0;
    while (IsDigit(static_cast<unsigned char>(p[n]))) ++n;
    return n;
}

// A decimal floating-point number: digits, an optional fraction, an optional exponent.
size_t MeasureReal(const char* p) {
    size_t n = MeasureInt(p);
    size_t digits = n;
    if (p[n] == '.') {
        const size_t frac = MeasureInt(p + n + 1);
        digits += frac;
        n += 1 + frac;
    }
    if (digits == 0) return 0;
    if (p[n] == 'e' || p[n] == 'E') {
        size_t k = n + 1;
        if (p[k] == '+' || p[k] == '-') ++k;
        const size_t exp = MeasureInt(p + k);
        if (exp) n = k + exp;
    }
    return n;
}

// The text of a number as its own string: strtod must not read past the measured length.
std::string Span(const char* p, size_t n) { return std::string(p, n); }

}  // namespace

int CEval::Lex(CEvalSemantic* v) {
    *v = CEvalSemantic{};
    if (!start_sent_) {
        start_sent_ = true;
        static const int kStart[] = {TK_START_EXPR, TK_START_LINES, TK_START_SCRIPT, TK_START_STMT};
        return kStart[entry_];
    }
    for (;;) {
        while (IsBlank(static_cast<unsigned char>(*position))) ++position;
        if (position[0] == '/' && position[1] == '/') {
            while (*position && *position != '\n') ++position;
        } else if (position[0] == '/' && position[1] == '*') {
            const char* end = std::strstr(position + 2, "*/");
            position = end ? end + 2 : position + std::strlen(position);
        } else {
            break;
        }
    }
    token_start = position;
    if (*position == 0) return TK_YYEOF;

    const char* p = position;
    const int id = static_cast<int>(MeasureId(p));
    int func_index = -1;
    const int func = FindFunction(p, &func_index);
    CZrkData* record = nullptr;
    int data = locals ? locals->GetLongestData(p, &record) : 0;
    if (!own_names_only) {
        for (CEval* e = parent; e; e = e->parent) {
            CZrkData* found = nullptr;
            const int len = e->locals ? e->locals->GetLongestData(p, &found) : 0;
            if (len > data) {
                data = len;
                record = found;
            }
        }
    }
    CScriptEntry* script_entry = nullptr;
    const int script = GlobalScriptSpace().GetLongestData(p, &script_entry);
    const bool signed_text = *p == '+' || *p == '-';
    const int real = signed_text ? 0 : static_cast<int>(MeasureReal(p));
    const int integer = signed_text ? 0 : static_cast<int>(MeasureInt(p));
    const CKeyword* keyword = nullptr;
    const int key = MatchKeyword(p, &keyword);

    if (id > func && id > data && id > key && id > script) {
        // A new name. The record keeps at most 127 characters of it.
        const std::string name(p, std::min(id, 253));
        v->data = locals->NewData(name.c_str());
        if (!v->data) return LexFailure("out of memory");
        position += id;
        return TK_ID;
    }
    if (data >= func && data >= integer && data >= real && data > key && data > script) {
        v->data = record;
        position += data;
        return TK_ID;
    }
    if (script >= func && script >= integer && script >= real && script > key) {
        v->script = script_entry;
        position += script;
        return TK_SCRIPT_ID;
    }
    if (func >= integer && func >= real && func > key) {
        v->code = func_index;
        position += func;
        return TK_FUNC;
    }
    if (integer > key && integer == real) {
        uint64_t value = 0;
        for (int k = 0; k < integer; ++k) value = value * 10 + static_cast<uint64_t>(p[k] - '0');
        v->data = temp.NewData(TYPE_N4, 1, 1, 1, 1, 1, 1, "");
        if (!v->data) return LexFailure("out of memory");
        *static_cast<uint32_t*>(v->data->Data()) = static_cast<uint32_t>(value);
        position += integer;
        return TK_INT;
    }
    if (real > key) {
        v->data = temp.NewData(TYPE_R4, 1, 1, 1, 1, 1, 1, "");
        if (!v->data) return LexFailure("out of memory");
        *static_cast<float*>(v->data->Data()) = std::strtof(Span(p, real).c_str(), nullptr);
        position += real;
        return TK_FLOAT;
    }
    if (key) {
        v->code = keyword->code;
        position += key;
        return keyword->token;
    }
    if (*p == '"' && std::strchr(p + 1, '"')) {
        const size_t len = static_cast<size_t>(std::strchr(p + 1, '"') - (p + 1));
        v->data = temp.NewData(TYPE_N1, len + 1, 1, 1, 1, 1, 1, "");
        if (!v->data) return LexFailure("out of memory");
        std::memcpy(v->data->Data(), p + 1, len);
        static_cast<char*>(v->data->Data())[len] = 0;
        position += len + 2;
        return TK_STRING;
    }
    if (p[0] == '\'' && p[1] && p[2] == '\'') {
        v->data = temp.NewData(TYPE_N1, 2, 1, 1, 1, 1, 1, "");
        if (!v->data) return LexFailure("out of memory");
        static_cast<char*>(v->data->Data())[0] = p[1];
        static_cast<char*>(v->data->Data())[1] = 0;
        position += 3;
        return TK_CHAR;
    }
    return LexFailure("unknown token");
}

int CEval::LexFailure(const char* message) {
    SetError("Lex()", message);
    lex_failure_ = message;
    return TK_LEX_ERROR;
}
