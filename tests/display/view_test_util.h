// A document and a view without a toolkit for the view tests: the timer, redraws and status
// lines are recorded.
#pragma once

#include <string>
#include <vector>

#include "display/image_view.h"

struct CTestDoc : CDisplayEntry {
    explicit CTestDoc(uint32_t kind, CZrkData* a) : CDisplayEntry(CLook(kind)) { data[0] = a; }
    void Redraw() override { ++redraws; }
    void Close() override { ++closes; }
    int redraws = 0;
    int closes = 0;
};

class CTestView : public CImageView {
  public:
    CTestView(CDisplayEntry& doc, const C2d& options, const CDataSpace& space)
        : CImageView(doc, options, space) {}

    std::vector<int> starts;
    int stops = 0;
    int redraws = 0;
    bool timer_works = true;
    std::vector<std::string> shown;

  protected:
    bool StartTimer(int period) override {
        starts.push_back(period);
        return timer_works;
    }
    bool StopTimer() override {
        ++stops;
        return timer_works;
    }
    void Redraw() override { ++redraws; }
    void ShowStatus(const std::string& text) override { shown.push_back(text); }
};
