#include "eval/eval.h"

#include <new>

#include "core/math_errors.h"
#include "core/report.h"
#include "grammar.h"

int qm_parse(CEval& ev);

namespace {

// The innermost failing evaluator names the file and the place; those around it keep that.
bool g_report_located = false;

bool IsIndexListTag(uint64_t tag) { return tag > TAG_INDEXED && tag <= TAG_INDEXED + 6; }

}  // namespace

CEval::CEval(Entry entry, CDataSpace& space) : space_(space), entry_(entry) {}

CEval::~CEval() = default;

int CEval::Eval(CZrkData** out, CEval* parent_eval, const char* text, const char* file_name) {
    if (out) *out = nullptr;
    parent = parent_eval;
    file = file_name;
    text_ = text ? text : "";
    position = token_start = text_;
    start_sent_ = false;
    g_report_located = false;
    if (parent) {
        if (!own_locals_) {
            own_locals_.reset(new (std::nothrow) CDataSpace);
            if (!own_locals_) return Fail(SetError("Eval()", "out of memory"));
        }
        own_locals_->SetUnique();
        locals = own_locals_.get();
    } else {
        ClearMathErrors();
        locals = &space_;
    }

    chain_.reset();
    int status = qm_parse(*this);
    if (status == 2) status = SetError("parse()", "stack overflow");
    // before links and untyped records go: a kept-back step may read one
    if (status == 0) Settle();

    space_.DelLinks();
    space_.DelUntyped();

    if (status == 0 && !stack.empty()) {
        CZrkData* record = PopData();
        if (!record && index_failed_) status = 1;
        if (out) *out = record;
    }
    chain_.reset();
    return Fail(status);
}

int CEval::Fail(int status) {
    if (status && !g_report_located) {
        err_file = file ? file : "";
        err_at = token_start ? token_start : "";
        g_report_located = true;
    }
    return status;
}

void CEval::SyntaxError() {
    if (lex_failure_) {
        SetError("Lex()", lex_failure_);
        return;
    }
    SetError("parse()", "syntax error");
}

int CEval::Push(uint64_t entry) {
    try {
        stack.push_back(entry);
    } catch (const std::bad_alloc&) {
        return SetError("Eval()", "stack overflow");
    }
    return 0;
}

int CEval::PushData(CZrkData* record) {
    if (skip) return 0;
    if (Push(reinterpret_cast<uintptr_t>(record))) return 1;
    return Push(TAG_DATA);
}

int CEval::PushTag(uint64_t tag) {
    if (skip) return 0;
    return Push(tag);
}

int CEval::PushAssign(int op) { return PushTag(TAG_ASSIGN + static_cast<uint64_t>(op)); }

int CEval::PopTag(uint64_t* tag) {
    Settle();
    if (stack.empty()) {
        err_msg = "internal error, stack underflow";
        return 1;
    }
    *tag = stack.back();
    stack.pop_back();
    return 0;
}

uint64_t CEval::Peek(int n) const {
    return n >= 0 && static_cast<size_t>(n) < stack.size() ? stack[stack.size() - 1 - n] : 0;
}

void CEval::Settle() {
    if (chain_) chain_->Run();
}

CZrkData* CEval::PopData() {
    Settle();
    return PopOperand();
}

CZrkData* CEval::PopOperand() {
    if (stack.empty()) return nullptr;
    const uint64_t tag = stack.back();
    if (IsIndexListTag(tag)) {
        if (Array()) {
            index_failed_ = true;
            return nullptr;
        }
        return PopOperand();
    }
    if (tag != TAG_DATA || stack.size() < 2) return nullptr;
    auto* record = reinterpret_cast<CZrkData*>(stack[stack.size() - 2]);
    stack.resize(stack.size() - 2);
    return IsOnStack(record) ? record : nullptr;
}

int CEval::DataNotOnStack(const char* func) {
    if (index_failed_) {
        index_failed_ = false;
        return 1;
    }
    return SetError(func, "internal error, data not on stack");
}

bool CEval::IsOnStack(const CZrkData* record) const {
    if (!record) return false;
    for (const CEval* e = this; e; e = e->parent) {
        if (e->temp.IsDataValid(record)) return true;
        if (e->locals && e->locals->IsDataValid(record)) return true;
    }
    return false;
}

int CEval::SkipEntry(size_t* pos) const {
    if (*pos == 0) return 1;
    const uint64_t tag = stack[*pos - 1];
    if (tag == TAG_DATA) {
        if (*pos < 2) return 1;
        *pos -= 2;
        return 0;
    }
    if (!IsIndexListTag(tag)) return 1;
    --*pos;
    for (uint64_t b = 0; b < tag - TAG_INDEXED; ++b) {
        if (*pos == 0) return 1;
        const uint64_t kind = stack[--*pos];
        if (kind > TAG_BRACKET_STEP) return 1;
        for (uint64_t k = 0; k < kind; ++k)
            if (SkipEntry(pos)) return 1;
    }
    // the record with its own tag lies below the list's opening tag
    if (*pos < 3 || stack[*pos - 1] != TAG_INDEXED || stack[*pos - 2] != TAG_DATA) return 1;
    *pos -= 3;
    return 0;
}

int CEval::CountArgs() const {
    size_t pos = stack.size();
    int count = 0;
    while (pos > 0 && stack[pos - 1] != TAG_MARK) {
        if (SkipEntry(&pos)) return -1;
        ++count;
    }
    return pos > 0 ? count : -1;
}
