// Direction filters: keep the waves travelling along one direction by weighting one half of
// k-space with the squared cosine of the angle to it, times a Butterworth band-pass.
//
// Filters are built with the Fourier origin at n/2 and moved to index 0 before use. An axis
// left out (dirf_use 0) is not transformed: its size is passed negative to the Fourier layer
// and the filter, built with size 1 along it, is spread over it. On the raw stack (mode 0) the
// sign of the time frequency tells two opposite waves apart, so slices 0..nt/2-1 of the time
// transform get the filter of the direction and the others that of its opposite.
// direction_filter, direction_filter_2d and zonly_filter are declared in stages.h.
#pragma once

// Half-space squared-cosine filter along (vx, vy, vz); 1.0 at the centre. A zero vector is
// fatal (the process exits): callers check their vectors first.
void cos2_filter_3d(float* filter, int nx, int ny, int nz, float fov_x, float fov_y, float fov_z,
                    float vx, float vy, float vz);
// Sector of half-width pi / (2 max(ncos, 1)) about `angle` degrees, weighted cos(n phi)^2.
void cos2_sector_2d(float* filter, int nx, int ny, float fov_x, float fov_y, float angle,
                    double ncos);
// `filter` holds a filter built with size 1 along every axis given a negative size; it is
// replicated in place over the full |nx| x |ny| x |nz|.
void spread_filter_2d(float* filter, int nx, int ny);
void spread_filter_3d(float* filter, int nx, int ny, int nz);

// Direction `index` of a set of `count` (x, y, z). 20 is the dodecahedron's vertices; 6, 12,
// 16, 24, 28 and 32 read the same storage with index 3 * i, components past it reading 0.
// Returns non-zero where the direction is the zero vector (index out of range) and for other
// counts, which leave v as it was.
int dirf_table_vector(int count, int index, float* v);
