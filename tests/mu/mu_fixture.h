// A data space with a recording host and an inversion form over it, and helpers to make the
// input arrays of a run.
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/data_space.h"
#include "core/host.h"
#include "core/zrk_data.h"
#include "mu/mu_form.h"
#include "mu/mu_options.h"

class MuFormTest : public ::testing::Test {
  public:
    MuFormTest() : scope_(host) {}

    CZrkData* Real(const char* name, res_t nx, res_t ny, res_t nz, res_t nt,
                   const std::function<float(size_t)>& value) {
        space.DelData(name);
        CZrkData* a = space.NewData(TYPE_R4, nx, ny, nz, nt, 1, 1, name);
        auto* f = static_cast<float*>(a->data);
        for (size_t i = 0; i < a->Count(); ++i) f[i] = value(i);
        return a;
    }
    CZrkData* Complex(const char* name, res_t nx, res_t ny, res_t nz, res_t nt,
                      const std::function<std::complex<float>(size_t)>& value) {
        space.DelData(name);
        CZrkData* a = space.NewData(TYPE_CR4, nx, ny, nz, nt, 1, 1, name);
        auto* f = static_cast<float*>(a->data);
        for (size_t i = 0; i < a->Count(); ++i) {
            std::complex<float> v = value(i);
            f[2 * i] = v.real(), f[2 * i + 1] = v.imag();
        }
        return a;
    }
    // A form whose sheet runs up to `last`, on arrays named in its data page.
    void Open(int last, const char* mag, const char* phase, int harmin) {
        form = std::make_unique<CMuForm>(space, options);
        form->Data()->c.magnitude = mag;
        form->Data()->c.phase[0] = phase;
        form->Data()->c.harmin = harmin;
        while (form->ActivePage() < last) ASSERT_EQ(form->Continue(), 0) << form->status;
    }
    std::vector<float> Floats(const char* name) {
        CZrkData* a = space.FindData(name);
        if (!a || !a->data) return {};
        auto* f = static_cast<const float*>(a->data);
        return std::vector<float>(f, f + a->Bytes() / sizeof(float));
    }

    CHeadlessHost host;
    CScopedHost scope_;
    CDataSpace space;
    CMuOptions options;
    std::unique_ptr<CMuForm> form;
};
