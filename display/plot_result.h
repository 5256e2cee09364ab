// What the views do with a 1d result (a profile, a histogram): a free name of the form
// "%s<tag>%02d" for it, and a 1d display of it through the 1d factory. Without a 1d factory
// the arrays stay in the data space and the status says "display failed".
#pragma once

#include <string>

class CDataSpace;
class CZrkData;

// "name<tag>NN" with the first NN (from 0) whose name, and name + ".x", is free in `space`.
std::string NextResultName(const CDataSpace& space, const char* name, const char* tag);

// Opens a 1d plot of `y` (against `x` when given) captioned `name`; 1 when it opened.
int OpenPlot(CZrkData* y, CZrkData* x, const std::string& name);
