// A synthetic elastography acquisition with a known answer, for trying the inversion and for
// its tests: a 2 kPa block with three cylinders along z of 1, 4 and 6 kPa, each wider than
// its own shear wavelength, driven at 60 Hz. Each of the three displacement components is a
// sum of plane waves whose phase integrates f / c along their way (c = sqrt(mu / rho)), so
// the local spatial frequency everywhere is f / c and the stiffness rho (f / nu)^2 is known.
//
// Layout as a scanner's export: x fastest, then y, z, the phase offsets, the components.
//
//   CDemoPhantom ph = MakeDemoPhantom({.noise = 0.02});
//   float p = ph.phase[(((c * noff + t) * nz + z) * ny + y) * nx + x];
#pragma once

#include <cstdint>
#include <vector>

struct CDemoPhantomSpec {
    int nx = 128, ny = 80, nz = 25;
    int noff = 8;
    int ncomp = 3;
    double freq = 60.0;    // Hz
    double voxel = 0.002;  // m, all three directions
    double noise = 0.0;    // standard deviation of the phase noise, radians
    uint32_t seed = 20201;
};

struct CDemoPhantom {
    // The cylinders: centre and radius in voxels, stiffness in kPa; region 0 is the block.
    struct Cylinder {
        double x, y, radius, kpa;
    };
    static constexpr double kBackgroundKpa = 2.0;
    static constexpr double kDensity = 1000.0;  // kg / m^3

    CDemoPhantomSpec spec;
    std::vector<Cylinder> cylinders;
    std::vector<float> magnitude;  // nx ny nz
    std::vector<float> phase;      // nx ny nz noff ncomp, radians
    std::vector<float> stiffness;  // nx ny nz, kPa
    std::vector<uint8_t> region;   // nx ny nz: 0 block, 1 ... 3 the cylinders
};

CDemoPhantom MakeDemoPhantom(const CDemoPhantomSpec& spec = {});

// The median of `values` where `region` equals `label` after eroding that region by `erode`
// voxels in x and y; NaN when nothing is left.
double RegionMedian(const std::vector<float>& values, const CDemoPhantom& ph, int label, int erode);
