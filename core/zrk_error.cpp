#include "core/zrk_error.h"

void Raise(const char* text) { throw ZrkError(text); }
