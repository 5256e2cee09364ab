// Scripts and statements: running a script file in either form, binding its arguments, and
// the control-flow evaluators, which work by parsing text without evaluating it (`skip`)
// and running saved slices of it again.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

#include "core/data_cursor.h"
#include "core/report.h"
#include "core/script_space.h"
#include "eval/eval.h"

namespace {

// Scripts that call scripts nest evaluators on the machine stack; a script calling itself
// ends here with a report instead of overflowing it.
constexpr int kMaxScriptDepth = 32;
int g_script_depth = 0;

class CScriptDepth {
  public:
    CScriptDepth() { ++g_script_depth; }
    ~CScriptDepth() { --g_script_depth; }
    CScriptDepth(const CScriptDepth&) = delete;
    CScriptDepth& operator=(const CScriptDepth&) = delete;
};

}  // namespace

int CEval::LoadScript(CScriptEntry* entry, std::string* text_out) {
    const std::string path = GlobalScriptSpace().Directory() + "/" + entry->name;
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return SetError("LoadScript()", "can not open script file");
    text_out->clear();
    char buf[4096];
    size_t n;
    while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) text_out->append(buf, n);
    std::fclose(f);
    return 0;
}

int CEval::CheckScriptDepth() {
    if (g_script_depth >= kMaxScriptDepth) return SetError("RunScript()", "stack overflow");
    return 0;
}

int CEval::RunLines(CScriptEntry* entry) {
    Settle();
    if (!GlobalScriptSpace().IsDataValid(entry))
        return SetError("RunScript()", "internal error, invalid data");
    if (skip) return 0;
    if (CheckScriptDepth()) return 1;
    CScriptDepth depth;
    CEvalLines ev(space_);
    if (LoadScript(entry, &ev.script_text)) return 1;
    return ev.Eval(nullptr, nullptr, ev.script_text.c_str(), entry->name.c_str());
}

int CEval::RunScript(CScriptEntry* entry, bool with_arguments) {
    Settle();
    if (!GlobalScriptSpace().IsDataValid(entry))
        return SetError("RunScript()", "internal error, invalid data");
    if (skip) return 0;
    if (CheckScriptDepth()) return 1;
    CScriptDepth depth;
    // `name()` has no argument list of its own: an empty one lets the formals be counted
    if (!with_arguments && PushTag(TAG_MARK)) return 1;
    CEvalScript ev(space_);
    if (LoadScript(entry, &ev.script_text)) return 1;
    const int status = ev.Eval(nullptr, this, ev.script_text.c_str(), entry->name.c_str());
    if (status == 0 && !with_arguments && Peek(0) == TAG_MARK) stack.pop_back();
    return status;
}

int CEval::FirstName(CZrkData* record) {
    Settle();
    if (PushTag(TAG_MARK)) return 1;
    return PushData(record);
}

int CEval::PassArgs() {
    if (skip) return 0;
    if (!parent) return SetError("PassArgs()", "argument number mismatch");
    while (Peek(0) != TAG_MARK) {
        if (stack.empty() || parent->Peek(0) == TAG_MARK || parent->stack.empty())
            return SetError("PassArgs()", "argument number mismatch");
        CZrkData* formal = PopData();
        if (!formal) return DataNotOnStack("PassArgs()");
        CZrkData* actual = parent->PopData();
        if (!actual) return parent->DataNotOnStack("PassArgs()");
        // every look-up follows the link: the formal is the caller's record itself
        formal->link = actual;
    }
    if (parent->Peek(0) != TAG_MARK) return SetError("PassArgs()", "argument number mismatch");
    stack.pop_back();
    parent->stack.pop_back();
    own_names_only = 0;
    return 0;
}

int CEval::Define() {
    Settle();
    if (skip) return 0;
    while (!stack.empty() && Peek(0) != TAG_MARK) {
        CZrkData* name = PopData();
        if (!name) return DataNotOnStack("Define()");
        if (!locals->IsDataValid(name) && !locals->NewData(name->name))
            return SetError("Define()", "out of memory");
    }
    if (!stack.empty()) stack.pop_back();
    return 0;
}

int CEval::ExprStmt() {
    if (skip) return 0;
    // A script call gives no value: then there is nothing to drop.
    const uint64_t top = Peek(0);
    if (top != TAG_DATA && !(top > TAG_INDEXED && top <= TAG_INDEXED + 6)) return 0;
    return PopData() ? 0 : DataNotOnStack("ExprStmt()");
}

int CEval::CountLoop(int* depth) {
    Settle();
    ++*depth;
    skip = 1;
    return 0;
}

int CEval::WhileOpen() {
    Settle();
    if (skip && do_depth == 1 && TextMark()) return 1;
    if (!skip || while_depth != 0) CountLoop(&while_depth);
    return 0;
}

int CEval::TextMark() {
    Settle();
    if (!skip) return Push(static_cast<uint64_t>(position - text_));
    if (do_depth || if_depth || for_depth || while_depth)
        return Push(static_cast<uint64_t>(token_start - text_));
    return 0;
}

int CEval::LoopEnd() { return TextMark(); }

std::string CEval::SliceText(int trim) {
    uint64_t end = 0, start = 0;
    PopTag(&end);
    PopTag(&start);
    const size_t length = std::strlen(text_);
    end = std::min<uint64_t>(end, length);
    start = std::min<uint64_t>(start, end);
    const uint64_t n = end - start > static_cast<uint64_t>(trim) ? end - start - trim : 0;
    return std::string(text_ + start, n);
}

int CEval::RunSlice(Entry entry, const std::string& text, int* value) {
    CZrkData* out = nullptr;
    if (entry == ENTRY_EXPR) {
        CEvalExpr ev(space_);
        const int status = ev.Eval(&out, this, text.c_str(), file);
        int32_t v = 0;
        if (status == 0 && out && out->Bytes()) CDataCursor<int32_t>(out).GetI(v, 0);
        if (value) *value = v;
        return status;
    }
    CEvalStmt ev(space_);
    return ev.Eval(&out, this, text.c_str(), file);
}

// Pops `count` marks into `marks`, bottom first.
static void PopMarks(CEval& ev, uint64_t* marks, int count) {
    for (int k = count; k-- > 0;) ev.PopTag(&marks[k]);
}

std::string CEval::Slice(uint64_t start, uint64_t end, int trim) {
    Push(start);
    Push(end);
    return SliceText(trim);
}

int CEval::IfEval() {
    Settle();
    if (skip && if_depth == 0) return 0;
    if (TextMark()) return 1;
    uint64_t m[3] = {0, 0, 0};  // after "(", after ")", the end of the statement
    PopMarks(*this, m, 3);
    if (if_depth-- != 1) return 0;
    std::string body, condition;
    try {
        body = Slice(m[1], m[2], 0);
        condition = Slice(m[0], m[1], 1);
    } catch (const std::bad_alloc&) {
        return SetError("IfEval()", "out of memory");
    }
    skip = 0;
    int value = 0;
    if (RunSlice(ENTRY_EXPR, condition, &value)) return 1;
    return value ? RunSlice(ENTRY_STMT, body, nullptr) : 0;
}

int CEval::ForEval(int parts) {
    Settle();
    if (TextMark()) return 1;
    // after "(", after each ";", after ")", the end of the statement
    uint64_t m[5] = {0, 0, 0, 0, 0};
    PopMarks(*this, m, 5);
    if (for_depth-- != 1) return 0;
    std::string init, condition, increment, body;
    try {
        body = Slice(m[3], m[4], 0);
        increment = (parts & 4) ? Slice(m[2], m[3], 1) : "";
        condition = (parts & 2) ? Slice(m[1], m[2], 1) : "";
        init = (parts & 1) ? Slice(m[0], m[1], 1) : "";
    } catch (const std::bad_alloc&) {
        return SetError("ForEval()", "out of memory");
    }
    skip = 0;
    int value = 0;
    // failures of the parts are not looked at: the condition alone ends the loop
    if (!init.empty()) RunSlice(ENTRY_EXPR, init, nullptr);
    if (!condition.empty()) RunSlice(ENTRY_EXPR, condition, &value);
    while (value) {
        RunSlice(ENTRY_STMT, body, nullptr);
        if (!increment.empty()) RunSlice(ENTRY_EXPR, increment, nullptr);
        value = 0;
        RunSlice(ENTRY_EXPR, condition, &value);
    }
    return 0;
}
