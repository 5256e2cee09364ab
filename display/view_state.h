// CMdiView: what every display view holds beside its pixels: its document (the window-list
// entry with the look and the arrays), the page (z, t, u, v) shown, the scroll mode and
// timer, the dirty flag and the status line. The toolkit's view derives from it and supplies
// the timer and the redraw; everything else is decided here.
//
// Scroll modes: 2 z, 3 t, 4 u, 5 v, 6 all (z fastest, carrying into t, u, v).
//
//   view.OnScrollAll();
//   view.OnScroll200ms();     // look.scroll_time = 200, timer (re)started
//   view.OnTimer();           // one step; redraw; status rebuilt
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "display/display_entry.h"

class CDataSpace;

class CMdiView {
  public:
    static constexpr int kPeriods[8] = {50, 100, 200, 500, 1000, 2000, 5000, 10000};

    explicit CMdiView(CDisplayEntry& doc) : doc_(doc) {}
    virtual ~CMdiView() = default;
    CMdiView(const CMdiView&) = delete;
    CMdiView& operator=(const CMdiView&) = delete;

    CDisplayEntry& Doc() const { return doc_; }
    CZrkData* Data(int k = 0) const { return doc_.data[k]; }
    CLook& Look() const { return doc_.look; }

    void OnScrollZ() { scroll_mode = 2; }
    void OnScrollT() { scroll_mode = 3; }
    void OnScrollU() { scroll_mode = 4; }
    void OnScrollV() { scroll_mode = 5; }
    void OnScrollAll() { scroll_mode = 6; }
    void OnScrollNext();
    void OnScrollPrior();
    // One step faster or slower through the menu's periods.
    void OnScrollPlus();
    void OnScrollMinus();
    void OnScroll50ms() { StartScroll(50); }
    void OnScroll100ms() { StartScroll(100); }
    void OnScroll200ms() { StartScroll(200); }
    void OnScroll500ms() { StartScroll(500); }
    void OnScroll1s() { StartScroll(1000); }
    void OnScroll2s() { StartScroll(2000); }
    void OnScroll5s() { StartScroll(5000); }
    void OnScroll10s() { StartScroll(10000); }
    void StartScroll(int period);
    void OnStopScroll();
    void OnTimer() { OnScrollNext(); }

    // The size of direction z, t, u, v (k 0 ... 3) of the first array; 1 without one.
    uint64_t PageSize(int k) const;
    // "[z][t]..." of the directions above 1, or "[mm]" forms with the look's units.
    std::string PositionText() const;
    // The array's name and its channel: " mag:", " phase:", " i/q:" (real arrays always).
    std::string ReadoutPrefix() const;

    // Histograms of the current plane, of every plane of the sequence together, and of each z
    // plane; arrays "%s_hNN.x" and ".y" in `space` and a 1d display of each. 0 on failure.
    int CalcHist(CDataSpace& space);
    int CalcHistAll(CDataSpace& space);
    int CalcHistZAll(CDataSpace& space);

    // Marks the picture stale and redraws by kind.
    void Draw() {
        dirty = true;
        Redraw();
    }

    int scroll_mode = 2;
    bool scroll_running = false;
    uint64_t page[4] = {0, 0, 0, 0};  // z, t, u, v
    bool dirty = true;
    std::string status;

  protected:
    // The toolkit's side: a repeating timer, a redraw, the status line and the read-out.
    virtual bool StartTimer(int period) = 0;
    virtual bool StopTimer() = 0;
    virtual void Redraw() = 0;
    virtual void ShowStatus(const std::string& text) = 0;
    // The cursor read-out after a step; the position alone by default.
    virtual std::string Readout() const { return ReadoutPrefix() + PositionText(); }

  private:
    void Step(int delta);
    // One histogram of the planes [first, last) (counted over all xy planes).
    int Histogram(CDataSpace& space, const std::vector<uint64_t>& planes);

    CDisplayEntry& doc_;
};

// Histogram bins as numpy.histogram makes them: `nbins` bins between lo and hi (widened by
// 0.5 each way when equal), the last bin closed; values outside and NaN are left out.
// `edges` gets nbins + 1 float32 edges.
void HistogramCounts(const std::vector<float>& values, int nbins, double lo, double hi,
                     std::vector<float>& edges, std::vector<float>& counts);
