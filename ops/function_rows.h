// Every function of the language: the declarations of each family of rows, and the one call
// that puts them all into the function table at start-up.
#pragma once

#include <vector>

#include "eval/function_table.h"

// Registers every family's rows and the matrix operators behind `*xy` and `/xy`. Called once
// at start-up; later calls do nothing.
void InstallFunctions();

std::vector<CFuncDecl> BasicRows();
std::vector<CFuncDecl> ComplexRows();
std::vector<CFuncDecl> MathRows();
std::vector<CFuncDecl> StructuralRows();
std::vector<CFuncDecl> TransformRows();
std::vector<CFuncDecl> ConvolutionRows();
std::vector<CFuncDecl> ReduceRows();
std::vector<CFuncDecl> MatrixRows();
std::vector<CFuncDecl> UnwrapRows();
std::vector<CFuncDecl> ThresholdRows();
