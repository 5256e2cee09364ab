// The four entry points of the engine, one call per encoding direction and filter angle.
// Each runs the chain from phase data to stiffness on buffers read through the driver
// services, and frees everything it allocated through the table before it returns; exhausted
// memory throws std::bad_alloc after freeing the table.
#pragma once

#include "wave/wave_params.h"

void wave_2d_1axis(wave_params* p);  // nz 1, one displacement component
void wave_2d_XYZ(wave_params* p);    // nz 1, three components together
void wave_3d_1axis(wave_params* p);  // nz above 1, one component
void wave_3d_XYZ(wave_params* p);    // nz above 1, three components together
