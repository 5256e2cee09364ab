/* The grammar of the equation language. One grammar, four entries: the evaluator's first
   token is a pseudo-token that picks the start. Every action is one call into the
   evaluator, which works on its own evaluation stack; the parser keeps no state of its own
   outside the evaluator it is handed. */

%code top {
// The parse stack is fixed at 500 entries; deeper nesting ends the parse with a report.
#define YYINITDEPTH 500
#define YYMAXDEPTH 500
}

%code requires {
#include "eval/eval.h"
#include "core/elementwise.h"
}

%code {
int qm_lex(QM_STYPE* value, CEval& ev);
void qm_error(CEval& ev, const char* message);
}

%define api.pure full
%define api.prefix {qm_}
%define api.token.prefix {TK_}
%define api.value.type {CEvalSemantic}
%parse-param {CEval& ev}
%lex-param {CEval& ev}

/* The dangling else, and "{" at the start of a statement: it opens a compound statement,
   not a list (17 tokens that can follow it) */
%expect 18

%token START_EXPR START_LINES START_SCRIPT START_STMT
%token ID FUNC SCRIPT_ID INT FLOAT STRING CHAR LEX_ERROR
%token COMPLEX SCRIPT DOTTYPE DOTN
%token SHIFT_LEFT_EQUAL SHIFT_RIGHT_EQUAL
%token CDATA STAR_MATRIX DIV_MATRIX OPEN_DIR OPEN_ILEAVE DATA
%token NOT_EQUAL LOGIC_EQUAL DOUBLE_OR DOUBLE_AND DOUBLE_PLUS DOUBLE_MINUS
%token LESS_AND_EQUAL GREATER_AND_EQUAL STAR_EQUAL DIVIDE_EQUAL PERCENT_EQUAL PLUS_EQUAL
%token MINUS_EQUAL OR_EQUAL AND_EQUAL XOR_EQUAL SHIFT_LEFT SHIFT_RIGHT
%token DOT OR HAT TILDA AND PLUS MINUS EQUAL LESS_THAN GREATER_THAN
%token OPEN_PAREN OPEN_SQUARE OPEN_CURLY CLOSE_PAREN CLOSE_SQUARE CLOSE_CURLY
%token COLON SEMICOLON COMMA EXCLAMATION STAR DIVIDE PERCENT QUESTION
%token DEFINE IF ELSE SWITCH DO WHILE FOR CASE DEFAULT GOTO CONTINUE BREAK RETURN

%start entry

%%

entry
    : START_EXPR expr
    | START_LINES translation_unit
    | START_SCRIPT script_unit
    | START_STMT iter_stmt
    ;

/* ---- lines ---- */

translation_unit
    : one_line
    | multiple_lines
    ;
one_line
    : assignment_expr
    ;
multiple_lines
    : one_line SEMICOLON
    | multiple_lines one_line SEMICOLON
    ;

/* ---- scripts in declaration form ---- */

script_unit
    : function_decln
    | script_unit function_decln
    ;
function_decln
    : SCRIPT id_decln compound_stmt
    ;
id_decln
    : OPEN_PAREN id_list CLOSE_PAREN   { if (ev.PassArgs()) YYABORT; }
    | OPEN_PAREN CLOSE_PAREN
    ;
id_list
    : ID                  { if (ev.FirstName($1.data)) YYABORT; }
    | id_list COMMA ID    { if (ev.PushData($3.data)) YYABORT; }
    ;

/* ---- statements ---- */

compound_close : CLOSE_CURLY ;
compound_stmt
    : OPEN_CURLY stmt_list compound_close
    | OPEN_CURLY compound_close
    ;
stmt_list
    : stmt
    | stmt_list stmt
    ;
stmt
    : labled_stmt
    | expr_stmt
    | define_stmt
    | compound_stmt
    | selection_stmt
    | iteration_stmt
    | jump_stmt
    ;
define_stmt
    : DEFINE id_list SEMICOLON   { if (ev.Define()) YYABORT; }
    ;
labled_stmt
    : ID COLON stmt
    | CASE constant_expr COLON stmt
    | DEFAULT COLON stmt
    ;
expr_stmt
    : expr SEMICOLON   { if (ev.ExprStmt()) YYABORT; }
    | SEMICOLON
    ;
iter_stmt : stmt ;
iter_expr : expr ;
for : FOR       { if (ev.CountLoop(&ev.for_depth)) YYABORT; } ;
do : DO         { if (ev.CountLoop(&ev.do_depth)) YYABORT; } ;
while : WHILE   { if (ev.WhileOpen()) YYABORT; } ;
if : IF         { if (ev.CountLoop(&ev.if_depth)) YYABORT; } ;
else : ELSE ;
open_expr : OPEN_PAREN     { if (ev.TextMark()) YYABORT; } ;
close_stmt : CLOSE_PAREN   { if (ev.TextMark()) YYABORT; } ;
semi_expr : SEMICOLON      { if (ev.TextMark()) YYABORT; } ;
selection_stmt
    : if open_expr iter_expr close_stmt iter_stmt                 { if (ev.IfEval()) YYABORT; }
    | if open_expr iter_expr close_stmt iter_stmt else iter_stmt  { if (ev.IfEval()) YYABORT; }
    | SWITCH open_expr iter_expr close_stmt iter_stmt
    ;
/* the code tells ForEval which of initialisation, condition and increment are present */
for_expr
    : semi_expr semi_expr                                 { $$.code = 0; }
    | semi_expr semi_expr iter_expr                       { $$.code = 4; }
    | semi_expr iter_expr semi_expr                       { $$.code = 2; }
    | semi_expr iter_expr semi_expr iter_expr             { $$.code = 6; }
    | iter_expr semi_expr semi_expr                       { $$.code = 1; }
    | iter_expr semi_expr semi_expr iter_expr             { $$.code = 5; }
    | iter_expr semi_expr iter_expr semi_expr             { $$.code = 3; }
    | iter_expr semi_expr iter_expr semi_expr iter_expr   { $$.code = 7; }
    ;
iteration_stmt
    : while open_expr iter_expr close_stmt iter_stmt                   { if (ev.LoopEnd()) YYABORT; }
    | do iter_stmt while open_expr iter_expr CLOSE_PAREN SEMICOLON     { if (ev.LoopEnd()) YYABORT; }
    | for open_expr for_expr close_stmt iter_stmt                      { if (ev.ForEval($3.code)) YYABORT; }
    ;
jump_stmt
    : GOTO ID SEMICOLON
    | CONTINUE SEMICOLON
    | BREAK SEMICOLON
    | RETURN SEMICOLON
    ;

/* ---- expressions ---- */

expr
    : assignment_expr
    | expr COMMA assignment_expr
    ;
assignment_expr
    : constant_expr
    | unary_expr assignment_op constant_expr   { if (ev.Assignment()) YYABORT; }
    ;
assignment_op
    : EQUAL               { if (ev.PushAssign(ASSIGN_EQUAL)) YYABORT; }
    | STAR_EQUAL          { if (ev.PushAssign(OP_MUL)) YYABORT; }
    | DIVIDE_EQUAL        { if (ev.PushAssign(OP_DIV)) YYABORT; }
    | PERCENT_EQUAL       { if (ev.PushAssign(OP_MOD)) YYABORT; }
    | PLUS_EQUAL          { if (ev.PushAssign(OP_ADD)) YYABORT; }
    | MINUS_EQUAL         { if (ev.PushAssign(OP_SUB)) YYABORT; }
    | SHIFT_LEFT_EQUAL    { if (ev.PushAssign(OP_SHL)) YYABORT; }
    | SHIFT_RIGHT_EQUAL   { if (ev.PushAssign(OP_SHR)) YYABORT; }
    | AND_EQUAL           { if (ev.PushAssign(OP_BITAND)) YYABORT; }
    | XOR_EQUAL           { if (ev.PushAssign(OP_BITXOR)) YYABORT; }
    | OR_EQUAL            { if (ev.PushAssign(OP_BITOR)) YYABORT; }
    ;
constant_expr
    : conditional_expr
    ;
conditional_expr
    : logical_or_expr
    | logical_or_expr QUESTION expr COLON conditional_expr   { if (ev.TernaryOp()) YYABORT; }
    ;
logical_or_expr
    : logical_and_expr
    | logical_or_expr DOUBLE_OR logical_and_expr   { if (ev.BinaryOp(OP_LOR)) YYABORT; }
    ;
logical_and_expr
    : inclusive_or_expr
    | logical_and_expr DOUBLE_AND inclusive_or_expr   { if (ev.BinaryOp(OP_LAND)) YYABORT; }
    ;
inclusive_or_expr
    : exclusive_or_expr
    | inclusive_or_expr OR exclusive_or_expr   { if (ev.BinaryOp(OP_BITOR)) YYABORT; }
    ;
exclusive_or_expr
    : and_expr
    | exclusive_or_expr HAT and_expr   { if (ev.BinaryOp(OP_BITXOR)) YYABORT; }
    ;
and_expr
    : equality_expr
    | and_expr AND equality_expr   { if (ev.BinaryOp(OP_BITAND)) YYABORT; }
    ;
equality_expr
    : relational_expr
    | equality_expr LOGIC_EQUAL relational_expr   { if (ev.BinaryOp(OP_EQ)) YYABORT; }
    | equality_expr NOT_EQUAL relational_expr     { if (ev.BinaryOp(OP_NE)) YYABORT; }
    ;
relational_expr
    : shift_expr
    | relational_expr LESS_THAN shift_expr           { if (ev.BinaryOp(OP_LT)) YYABORT; }
    | relational_expr GREATER_THAN shift_expr        { if (ev.BinaryOp(OP_GT)) YYABORT; }
    | relational_expr LESS_AND_EQUAL shift_expr      { if (ev.BinaryOp(OP_LE)) YYABORT; }
    | relational_expr GREATER_AND_EQUAL shift_expr   { if (ev.BinaryOp(OP_GE)) YYABORT; }
    ;
shift_expr
    : add_expr
    | shift_expr SHIFT_LEFT add_expr    { if (ev.BinaryOp(OP_SHL)) YYABORT; }
    | shift_expr SHIFT_RIGHT add_expr   { if (ev.BinaryOp(OP_SHR)) YYABORT; }
    ;
add_expr
    : multiply_expr
    | add_expr PLUS multiply_expr    { if (ev.BinaryOp(OP_ADD)) YYABORT; }
    | add_expr MINUS multiply_expr   { if (ev.BinaryOp(OP_SUB)) YYABORT; }
    ;
multiply_expr
    : cast_expr
    | multiply_expr STAR cast_expr          { if (ev.BinaryOp(OP_MUL)) YYABORT; }
    | multiply_expr DIVIDE cast_expr        { if (ev.BinaryOp(OP_DIV)) YYABORT; }
    | multiply_expr PERCENT cast_expr       { if (ev.BinaryOp(OP_MOD)) YYABORT; }
    | multiply_expr STAR_MATRIX cast_expr   { if (ev.MatrixOp(false, $2.code)) YYABORT; }
    | multiply_expr DIV_MATRIX cast_expr    { if (ev.MatrixOp(true, $2.code)) YYABORT; }
    ;
cast_expr
    : unary_expr
    | OPEN_PAREN data_spec CLOSE_PAREN cast_expr    { if (ev.Cast($2.code)) YYABORT; }
    | OPEN_PAREN array_list CLOSE_PAREN cast_expr   { if (ev.Tile($2.code)) YYABORT; }
    ;
unary_expr
    : postfix_expr
    | DOUBLE_PLUS unary_expr    { if (ev.AutoOp(1)) YYABORT; }
    | DOUBLE_MINUS unary_expr   { if (ev.AutoOp(-1)) YYABORT; }
    | PLUS cast_expr
    | MINUS cast_expr           { if (ev.UnaryOp(OP_NEG)) YYABORT; }
    | EXCLAMATION cast_expr     { if (ev.UnaryOp(OP_LNOT)) YYABORT; }
    | TILDA cast_expr           { if (ev.UnaryOp(OP_COMPL)) YYABORT; }
    ;
postfix_expr
    : primary_expr
    | FUNC arglist_open argument_list CLOSE_PAREN     { if (ev.CallFunction($1.code)) YYABORT; }
    | script arglist_open argument_list CLOSE_PAREN   { if (ev.RunScript($1.script, true)) YYABORT; }
    | script OPEN_PAREN CLOSE_PAREN                   { if (ev.RunScript($1.script, false)) YYABORT; }
    | script                                          { if (ev.RunLines($1.script)) YYABORT; }
    | postfix_expr DOUBLE_PLUS                        { if (ev.AutoOp(1)) YYABORT; }
    | postfix_expr DOUBLE_MINUS                       { if (ev.AutoOp(-1)) YYABORT; }
    ;
primary_expr
    : ID                                             { if (ev.PushData($1.data)) YYABORT; }
    | ID { if (ev.IndexOpen($1.data)) YYABORT; } array_list   { if (ev.IndexCount($3.code)) YYABORT; }
    | ID data_info                                   { if (ev.DataInfo($1.data, $2.code)) YYABORT; }
    | constant
    | OPEN_PAREN assignment_expr CLOSE_PAREN
    | init
    ;
init
    : open_init init_list CLOSE_CURLY         { if (ev.InitList()) YYABORT; }
    | open_init init_list COMMA CLOSE_CURLY   { if (ev.InitList()) YYABORT; }
    ;
open_init
    : OPEN_CURLY brace_open
    | OPEN_DIR      { if (ev.PushTag(TAG_OPEN_X + $1.code)) YYABORT; }
    | OPEN_ILEAVE   { if (ev.PushTag(TAG_OPEN_ILEAVE_X + $1.code)) YYABORT; }
    ;
brace_open
    : %empty   { if (ev.PushTag(TAG_OPEN_X)) YYABORT; }
    ;
init_list
    : constant_expr
    | init_list COMMA constant_expr
    ;
/* the code counts the brackets */
array_list
    : array              { $$.code = 1; }
    | array_list array   { $$.code = $1.code + 1; }
    ;
array
    : OPEN_SQUARE CLOSE_SQUARE              { if (ev.PushTag(TAG_BRACKET_ALL)) YYABORT; }
    | OPEN_SQUARE array_elm CLOSE_SQUARE
    ;
array_elm
    : STAR                                                       { if (ev.PushTag(TAG_BRACKET_ALL)) YYABORT; }
    | constant_expr                                              { if (ev.PushTag(TAG_BRACKET_ONE)) YYABORT; }
    | constant_expr COLON constant_expr                          { if (ev.PushTag(TAG_BRACKET_RANGE)) YYABORT; }
    | constant_expr COLON constant_expr COLON constant_expr      { if (ev.PushTag(TAG_BRACKET_STEP)) YYABORT; }
    ;
arglist_open
    : OPEN_PAREN   { if (ev.PushTag(TAG_MARK)) YYABORT; }
    ;
script
    : SCRIPT_ID
    ;
argument_list
    : assignment_expr
    | argument_list COMMA assignment_expr
    ;
/* the code is the element type */
data_spec
    : DATA
    | COMPLEX DATA   { $$.code = $2.code + 10; }
    | CDATA
    ;
data_info
    : DOTN
    | DOTTYPE
    ;
constant
    : INT      { if (ev.PushData($1.data)) YYABORT; }
    | CHAR     { if (ev.PushData($1.data)) YYABORT; }
    | FLOAT    { if (ev.PushData($1.data)) YYABORT; }
    | STRING   { if (ev.PushData($1.data)) YYABORT; }
    ;

%%

int qm_lex(QM_STYPE* value, CEval& ev) { return ev.Lex(value); }

void qm_error(CEval& ev, const char* message) {
    (void)message;
    ev.SyntaxError();
}
