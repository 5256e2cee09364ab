// GridGraph<Dims>: maximum flow on a 4-connected (2-D) or 6-connected (3-D) grid, by search
// trees grown from both terminals, augmentation and adoption of orphans.
//
// Nodes stand in a padded grid with one node of margin on every side, stored in blocks of 64
// (8 x 8, or 4 x 4 x 4) so that most neighbours share cache lines. All per-node arrays come
// from one zeroed allocation, each starting on a 64-byte bound; a failed allocation throws
// std::bad_alloc with the text "bad allocation".
//
//   GridGraph<2> g(w, h, 1);
//   g.Load(source, sink, caps);      // plane arrays, x fastest; caps[d] per direction
//   float flow = g.MaxFlow();
//   bool one = g.InSinkTree(g.Node(x, y, 0));
//
// Directions: 0 x-1, 1 x+1, 2 y-1, 3 y+1 (4 z-1, 5 z+1).
#pragma once

#include <cstdint>
#include <new>

struct GridBadAlloc : std::bad_alloc {
    const char* what() const noexcept override { return "bad allocation"; }
};

template <int Dims>
class GridGraph {
  public:
    static constexpr int kDirs = 2 * Dims;

    GridGraph(int64_t width, int64_t height, int64_t depth);
    ~GridGraph();
    GridGraph(const GridGraph&) = delete;
    GridGraph& operator=(const GridGraph&) = delete;

    // The node of real point (x, y, z).
    int32_t Node(int64_t x, int64_t y, int64_t z) const;
    // Inline: the growth and adoption loops call it for every edge they look at.
    int32_t Neighbour(int32_t i, int d) const {
        if constexpr (Dims == 2) {
            switch (d) {
                case 0:
                    return (i & 7) ? i - 1 : i - 57;
                case 1:
                    return (i & 7) == 7 ? i + 57 : i + 1;
                case 2:
                    return (i & 56) ? i - 8 : i - row_step_;
                default:
                    return (i & 56) == 56 ? i + row_step_ : i + 8;
            }
        } else {
            switch (d) {
                case 0:
                    return (i & 3) ? i - 1 : i - 61;
                case 1:
                    return (i & 3) == 3 ? i + 61 : i + 1;
                case 2:
                    return (i & 12) ? i - 4 : i - row_step_;
                case 3:
                    return (i & 12) == 12 ? i + row_step_ : i + 4;
                case 4:
                    return (i & 48) ? i - 16 : i - slice_step_;
                default:
                    return (i & 48) == 48 ? i + slice_step_ : i + 16;
            }
        }
    }

    // Terminal capacities per point and edge capacities per point and direction, all in
    // real-point order (x fastest); edges leaving the grid get none. Source and sink cancel
    // in double before the rest is kept as float.
    void Load(const double* source, const double* sink, const double* const* caps);
    // Runs to the maximum flow and returns it (the part taken at loading included).
    float MaxFlow();
    int Label(int32_t i) const { return label[i] & 3; }
    bool InSinkTree(int32_t i) const { return Label(i) == 2; }

    // Bytes of the one allocation for n padded nodes.
    static uint64_t BlockBytes(uint64_t n);

  private:
    static constexpr int kNone = 4 + (Dims == 3 ? 2 : 0);  // no parent: an orphan or free
    static constexpr int kTerminal = kNone + 1;
    static constexpr int Opposite(int d) { return d ^ 1; }

    void SetLabel(int32_t i, int tree) { label[i] = static_cast<uint8_t>((label[i] & ~3) | tree); }
    // In 3-D bit 2 + d of the label byte tells whether direction d has capacity.
    bool Open(int32_t i, int d) const {
        if constexpr (Dims == 3) return (label[i] >> (2 + d)) & 1;
        return residual_[d][i] > 0;
    }
    void SetResidual(int32_t i, int d, float r) {
        residual_[d][i] = r;
        if constexpr (Dims == 3) {
            const uint8_t bit = static_cast<uint8_t>(4u << d);
            label[i] = static_cast<uint8_t>(r > 0 ? (label[i] | bit) : (label[i] & ~bit));
        }
    }
    void Activate(int32_t i);
    // Drops the head of the active queue.
    int32_t NextActive();
    // Finds an edge from the source tree into the sink tree; false when none is left.
    bool Grow(int32_t* from, int32_t* dir);
    void Augment(int32_t from, int dir);
    void Adopt();
    void Orphan(int32_t i);
    // True when the walk up from i reaches a terminal; marks the walk known good.
    bool Rooted(int32_t i);

    int64_t pw_ = 0, ph_ = 0, pd_ = 0;  // padded sizes
    int64_t width_, height_, depth_;
    int32_t row_step_ = 0, slice_step_ = 0;
    int64_t n_ = 0;
    void* block_ = nullptr;

    uint8_t* label = nullptr;
    uint8_t* parentDir = nullptr;
    int32_t* parent = nullptr;
    float* residual_[kDirs] = {};
    float* terminalResidual = nullptr;
    int32_t* timestamp = nullptr;
    int32_t* activeNext = nullptr;
    int32_t* orphanFifo_ = nullptr;
    int32_t* orphanStack_ = nullptr;

    int32_t activeHead_ = 0, activeTail_ = 0;
    int64_t orphanHead_ = 0, orphanCount_ = 0;
    int32_t time_ = 1;
    float flow = 0;
};

extern template class GridGraph<2>;
extern template class GridGraph<3>;
