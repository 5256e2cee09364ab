// CEval: the evaluator of the equation language. Evaluation happens during parsing: each
// reduction of the grammar runs its operation at once on the evaluation stack, and there is
// no syntax tree. One grammar serves four entry classes, which differ only in their start:
//
//   CEvalExpr    one expression (a script argument, a condition)
//   CEvalLines   what the user types: one line, or lines each ending in ';'
//   CEvalScript  a script file in declaration form: script (a, b) { ... }
//   CEvalStmt    one statement
//
// An evaluator lives for one run, on the caller's stack, and works on the data space it is
// handed (the desktop's is GlobalDataSpace(), passed in by whoever owns it). Every
// intermediate result lives on its private list `temp` and dies with it; only what an
// assignment moves into a named record of that space survives. Failures leave their report
// in the four error strings (core/report.h).
//
//   CEvalLines ev(space);
//   CZrkData* result;
//   if (ev.Eval(&result, nullptr, "b = a * 2 + 1", nullptr)) status = ErrorText();
//
// Evaluation stack: 64-bit entries, every record followed by a tag (see EvalTag). An index
// list is, bottom to top: the record and its TAG_DATA, TAG_INDEXED, per bracket its expressions and
// its kind (0 to 3), and last TAG_INDEXED plus the number of brackets.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/scalar_chain.h"
#include "core/script_space.h"
#include "core/zrk_data.h"

enum EvalTag : uint64_t {
    TAG_BRACKET_ALL = 0,    // [] and [*]
    TAG_BRACKET_ONE = 1,    // [a]
    TAG_BRACKET_RANGE = 2,  // [a:b]
    TAG_BRACKET_STEP = 3,   // [a:b:c]
    TAG_SCRIPT = 264,
    TAG_MARK = 323,           // opening mark of an argument list
    TAG_OPEN_X = 350,         // list openers: 350 ... 355 by direction
    TAG_OPEN_ILEAVE_X = 356,  // interleaving openers: 356 ... 361
    TAG_DATA = 500,           // the entry below is a record
    TAG_INDEXED = 501,        // the record below has an index list above it; 502 ... 507 end one
    TAG_ASSIGN = 600,         // an assignment operator: TAG_ASSIGN + its code
};

// Assignment operators, as pushed between the two sides.
enum EvalAssign {
    ASSIGN_EQUAL = 99,  // plain "="; compound ones push their EvalOp code
};

// The semantic value of a token or rule of the grammar.
struct CEvalSemantic {
    CZrkData* data = nullptr;
    CScriptEntry* script = nullptr;
    int code = 0;
};

class CEval {
  public:
    enum Entry { ENTRY_EXPR, ENTRY_LINES, ENTRY_SCRIPT, ENTRY_STMT };

    // `space` holds the named records of a top-level run; it must outlive the evaluator.
    CEval(Entry entry, CDataSpace& space);
    virtual ~CEval();
    CEval(const CEval&) = delete;
    CEval& operator=(const CEval&) = delete;

    // Runs `text`. 0 with *result set (it may be null) to the record left on the stack, 1 on
    // failure. `file` names the script for reports, or null.
    virtual int Eval(CZrkData** result, CEval* parent, const char* text, const char* file);

    // --- called by the parser ---
    int Lex(CEvalSemantic* value);
    void SyntaxError();
    void DepthExceeded();

    int PushData(CZrkData* record);
    int PushTag(uint64_t tag);
    // An assignment operator between the two sides: ASSIGN_EQUAL or an EvalOp code.
    int PushAssign(int op);
    int BinaryOp(int op);
    int UnaryOp(int op);
    int AutoOp(int delta);
    int TernaryOp();
    int Assignment();
    int MatrixOp(bool divide, int pair);

    // Literals, indexing and casts.
    int InitList();
    int IndexOpen(CZrkData* record);
    int IndexCount(int brackets);
    int Cast(int type);
    int Tile(int brackets);
    int DataInfo(CZrkData* record, int what);

    // Functions and scripts.
    int CallFunction(int index);
    int RunLines(CScriptEntry* entry);
    int RunScript(CScriptEntry* entry, bool with_arguments);
    int PassArgs();
    int FirstName(CZrkData* record);

    // Statements and control flow.
    int ExprStmt();
    int Define();
    int CountLoop(int* depth);
    int WhileOpen();
    int TextMark();
    int IfEval();
    int ForEval(int parts);
    int LoopEnd();

    // --- stack access for handlers and tests ---
    // The record on top, index reads done; null when there is none (see DataNotOnStack).
    CZrkData* PopData();
    int PopTag(uint64_t* tag);
    uint64_t Peek(int n) const;
    // Runs the arithmetic kept back for one pass (see CScalarChain). Everything that may read
    // a result or change an array settles first; only binary operators and pushes do not.
    void Settle();
    // Number of arguments above the nearest mark, -1 when no mark is reached.
    int CountArgs() const;
    // The failure status for a null from PopData under `func`: a report made by a failed
    // index read stands, otherwise "internal error, data not on stack".
    int DataNotOnStack(const char* func);
    // Whether `record` is on temp or locals of this evaluator or of a parent.
    bool IsOnStack(const CZrkData* record) const;

    CDataSpace& Temp() { return temp; }
    CDataSpace* Locals() { return locals; }
    CEval* Parent() const { return parent; }
    size_t StackDepth() const { return stack.size(); }

  protected:
    // The text of the current script, owned.
    std::string script_text;

  private:
    int Push(uint64_t entry);
    CZrkData* PopOperand();
    CZrkData* KeepBack(int op, CZrkData* a, CZrkData* b);
    void Drop(CZrkData* used, const CZrkData* result);
    int Fail(int status);
    int IndexedAssignment(int op, CZrkData* value);
    int SkipEntry(size_t* pos) const;
    int Array();
    int LoadScript(CScriptEntry* entry, std::string* text_out);
    int CheckScriptDepth();
    std::string SliceText(int trim);
    std::string Slice(uint64_t start, uint64_t end, int trim);
    int RunSlice(Entry entry, const std::string& text, int* value);

    int LexFailure(const char* message);

  public:
    // Fields in the order of the language's evaluator; public for the parser and tests.
    CDataSpace temp;
    CDataSpace* locals = nullptr;
    int own_names_only = 1;
    std::vector<uint64_t> stack;
    int do_depth = 0, if_depth = 0, for_depth = 0, while_depth = 0;
    const char* file = nullptr;
    const char* token_start = nullptr;
    const char* position = nullptr;
    CEval* parent = nullptr;
    int skip = 0;
    int result = 0;
    CZrkData* value = nullptr;

  private:
    CDataSpace& space_;
    Entry entry_;
    bool start_sent_ = false;
    // The report of a token the lexer refused: reductions the parser makes before it
    // notices the failed token may overwrite err_func, so the report is set again then.
    const char* lex_failure_ = nullptr;
    bool index_failed_ = false;
    const char* text_ = nullptr;
    std::unique_ptr<CDataSpace> own_locals_;
    std::optional<CScalarChain> chain_;
};

class CEvalExpr : public CEval {
  public:
    explicit CEvalExpr(CDataSpace& space) : CEval(ENTRY_EXPR, space) {}
};

class CEvalLines : public CEval {
  public:
    explicit CEvalLines(CDataSpace& space) : CEval(ENTRY_LINES, space) {}
};

class CEvalScript : public CEval {
  public:
    explicit CEvalScript(CDataSpace& space) : CEval(ENTRY_SCRIPT, space) {}
};

class CEvalStmt : public CEval {
  public:
    explicit CEvalStmt(CDataSpace& space) : CEval(ENTRY_STMT, space) {}
};
