// A clean global data space and a recording host for each test, and helpers that run
// equations and read records back as numbers.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/block_io.h"
#include "core/data_space.h"
#include "core/host.h"
#include "core/report.h"
#include "eval/eval.h"

class EvalTest : public ::testing::Test {
  protected:
    void SetUp() override {
        Clear();
        GlobalDataSpace().SetUnique();
    }
    void TearDown() override { Clear(); }
    static void Clear() {
        CDataSpace& ds = GlobalDataSpace();
        while (ds.Count() > 0) ds.DelData(0);
    }

    // Runs `text` as lines; 0 or 1.
    int Run(const std::string& text) {
        CEvalLines ev(GlobalDataSpace());
        return ev.Eval(nullptr, nullptr, text.c_str(), nullptr);
    }
    CZrkData* Find(const char* name) { return GlobalDataSpace().FindData(name); }
    // Runs the lines; "" on success, else the report without its position.
    std::string Report(const std::string& text) {
        if (!Run(text)) return "";
        const std::string report = ErrorText();
        return report.substr(0, report.find(" at: "));
    }
    // The elements of a record, i and q interleaved when complex.
    static std::vector<double> Values(const CZrkData* r) {
        std::vector<double> out;
        if (!r || !r->Data()) return out;
        const int comps = r->IsComplex() ? 2 : 1;
        out.resize(r->Count() * comps);
        CBlockReader<double> reader(r, comps);
        const double* p = reader.Read(0, r->Count(), out.data());
        out.assign(p, p + r->Count() * comps);
        return out;
    }
    // "type" and values of `name` after running "name = expr;".
    std::pair<std::string, std::vector<double>> Eval(const std::string& expr) {
        if (Run("result_ = " + expr)) return {"error: " + ErrorText(), {}};
        const CZrkData* r = Find("result_");
        return {r->HeaderText(), Values(r)};
    }

    CHeadlessHost host;
    CScopedHost scoped{host};
};
