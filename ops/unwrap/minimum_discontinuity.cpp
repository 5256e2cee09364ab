// Minimum weighted discontinuity. The nodes are the corners between points; an edge between
// two corners crosses one pair of neighbouring points and carries that pair's jump in whole
// cycles. Walking an edge changes its jump by one; the edge's cost is the change of the
// weighted discontinuity that brings. Node values are longest-path potentials kept on a tree
// of tight edges; an edge that would raise an ancestor of its own start closes a loop of
// negative cost, and the jumps around that loop change. When no edge raises any node, the
// jumps are integrated into the result.
#include "ops/unwrap/minimum_discontinuity.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

#include "core/host.h"
#include "ops/unwrap/solvers.h"

namespace {

enum : uint8_t {
    kRight = 0x01,  // tree edge to the node on the right
    kLeft = 0x02,
    kBelow = 0x04,
    kAbove = 0x08,
    kThisPass = 0x40,
    kNextPass = 0x80,
    kChanged = kThisPass | kNextPass,
};

// True when any of the eight bytes from `p` has kThisPass.
inline bool Marked(const uint8_t* p) {
    uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word & 0x4040404040404040ull;
}

// The nearest whole number; NaN counts as 0.
inline int Nearest(float d) {
    if (!(d == d)) return 0;
    return d > 0 ? static_cast<int>(d + 0.5f) : static_cast<int>(d - 0.5f);
}

// Node indices on the walk stack are 32-bit; a larger plane is refused as too large to hold.
int64_t NodeCount(int64_t w, int64_t h) {
    if (w < 0 || h < 0 || (w + 1) > std::numeric_limits<int32_t>::max() / (h + 1))
        throw std::bad_alloc();
    return (w + 1) * (h + 1);
}

}  // namespace

CMinimumDiscontinuity::CMinimumDiscontinuity(const float* phase, const float* quality, float* out,
                                             int64_t w, int64_t h)
    : width(w),
      height(h),
      stride(w + 1),
      rows(h + 1),
      value(static_cast<size_t>(NodeCount(w, h))),
      hJump(value.size()),
      vJump(value.size()),
      bits(value.size()),
      phase_(phase),
      quality_(quality),
      out_(out),
      stack_(value.size()) {}

void CMinimumDiscontinuity::Run() {
    const int64_t w = width, h = height;
    for (int64_t k = 0; k < w * h; ++k) out_[k] = phase_[k];
    for (int64_t j = 1; j < h; ++j)
        for (int64_t i = 1; i <= w; ++i)
            vJump[j * stride + i] = static_cast<int16_t>(
                Nearest(phase_[j * w + i - 1] - phase_[(j - 1) * w + i - 1] + 1e-6f));
    for (int64_t j = 1; j <= h; ++j)
        for (int64_t i = 1; i < w; ++i)
            hJump[j * stride + i] = static_cast<int16_t>(
                Nearest(phase_[(j - 1) * w + i] - phase_[(j - 1) * w + i - 1] + 1e-6f));
    for (uint8_t& b : bits) b = kThisPass;

    for (bool changed = true; changed;) {
        changed = false;
        // Late rounds find few nodes changed: eight edges at a time are passed over when
        // none of their nodes is marked. Nothing in a skipped stretch could have run, so
        // the order of the edges that do run is the same.
        for (int64_t j = 0; j + 1 < rows; ++j) {
            const uint8_t* row = &bits[j * stride];
            for (int64_t i = 0; i < stride;) {
                if (i + 8 <= stride && !Marked(row + i) && !Marked(row + stride + i)) {
                    i += 8;
                    continue;
                }
                changed |= Relax<kDown>(i++, j);
            }
        }
        for (int64_t j = 0; j < rows; ++j) {
            const uint8_t* row = &bits[j * stride];
            for (int64_t i = 0; i + 1 < stride;) {
                if (i + 9 <= stride && !Marked(row + i) && !Marked(row + i + 1)) {
                    i += 8;
                    continue;
                }
                changed |= Relax<kRightward>(i++, j);
            }
        }
        for (int64_t j = rows - 1; j >= 1; --j) {
            const uint8_t* row = &bits[j * stride];
            for (int64_t i = stride - 1; i >= 0;) {
                if (i >= 7 && !Marked(row + i - 7) && !Marked(row - stride + i - 7)) {
                    i -= 8;
                    continue;
                }
                changed |= Relax<kUp>(i--, j);
            }
        }
        for (int64_t j = rows - 1; j >= 0; --j) {
            const uint8_t* row = &bits[j * stride];
            for (int64_t i = stride - 1; i >= 1;) {
                if (i >= 8 && !Marked(row + i - 7) && !Marked(row + i - 8)) {
                    i -= 8;
                    continue;
                }
                changed |= Relax<kLeftward>(i--, j);
            }
        }
        // Nodes changed in this round are looked at in the next.
        for (uint8_t& b : bits)
            b = static_cast<uint8_t>((b & kNextPass) ? (b & 0x3f) | kThisPass : b & 0x3f);
    }
    Integrate();
}

// The weight of an edge inside the grid, by the point above and left of its lower or
// right node (i, j). A quality outside 0 ... 1 is held to it, NaN counts as 0: a negative
// weight lets values climb without end, and one too large overflows.
int32_t CMinimumDiscontinuity::Weight(int64_t i, int64_t j) const {
    const float q = quality_[(j - 1) * width + (i - 1)];
    if (!(q > 0)) return 1;
    return static_cast<int32_t>((q < 1 ? q : 1.0f) * 25500.0f + 1.0f);
}

// The relaxation of the edge from (i, j) in the sweep's direction. True on a change.
template <CMinimumDiscontinuity::Sweep sweep>
bool CMinimumDiscontinuity::Relax(int64_t i, int64_t j) {
    const int64_t a = j * stride + i;
    int64_t b;
    int32_t c;
    if constexpr (sweep == kDown) {
        b = a + stride;
        if (!((bits[a] | bits[b]) & kThisPass)) return false;
        c = i >= 1 && i <= width - 1 ? Weight(i, j + 1) : 1;
        if (-hJump[b] < 0) c = -c;
    } else if constexpr (sweep == kRightward) {
        b = a + 1;
        if (!((bits[a] | bits[b]) & kThisPass)) return false;
        c = j >= 1 && j <= height - 1 ? Weight(i + 1, j) : 1;
        if (vJump[b] < 0) c = -c;
    } else if constexpr (sweep == kUp) {
        b = a - stride;
        if (!((bits[a] | bits[b]) & kThisPass)) return false;
        c = i >= 1 && i <= width - 1 ? Weight(i, j) : 1;
        if (hJump[a] < 0) c = -c;
    } else {
        b = a - 1;
        if (!((bits[a] | bits[b]) & kThisPass)) return false;
        c = j >= 1 && j <= height - 1 ? Weight(i, j) : 1;
        if (-vJump[a] < 0) c = -c;
    }
    const int64_t delta = int64_t{value[a]} - value[b] - c;
    if (delta <= 0) return false;
    if (!ChangeSubtree(b, delta, a)) {
        CutParent(b);
        bits[a] |= ChildBit(a, b);
    } else {
        RemoveLoop(a, b, delta);
    }
    return true;
}

// The bit in `from` that makes `to` (a neighbour) its child.
uint8_t CMinimumDiscontinuity::ChildBit(int64_t from, int64_t to) const {
    if (to == from + 1) return kRight;
    if (to == from - 1) return kLeft;
    return to > from ? kBelow : kAbove;
}

// Clears the bit of whichever neighbour has `node` as child.
void CMinimumDiscontinuity::CutParent(int64_t node) {
    const int64_t i = node % stride, j = node / stride;
    if (i > 0) bits[node - 1] &= ~kRight;
    if (i + 1 < stride) bits[node + 1] &= ~kLeft;
    if (j > 0) bits[node - stride] &= ~kBelow;
    if (j + 1 < rows) bits[node + stride] &= ~kAbove;
}

// The neighbour that has `node` as child; -1 when none has.
int64_t CMinimumDiscontinuity::Parent(int64_t node) const {
    const int64_t i = node % stride, j = node / stride;
    if (i > 0 && (bits[node - 1] & kRight)) return node - 1;
    if (i + 1 < stride && (bits[node + 1] & kLeft)) return node + 1;
    if (j > 0 && (bits[node - stride] & kBelow)) return node - stride;
    if (j + 1 < rows && (bits[node + stride] & kAbove)) return node + stride;
    return -1;
}

// Adds `change` to the value of every node of the subtree of `root`, marking each. A node
// that would go below 0 stays at 0 and leaves the tree, its children with it. True when
// the walk met `watch`. The walk keeps an explicit stack: trees grow deeper than the
// main thread's stack allows on large planes.
bool CMinimumDiscontinuity::ChangeSubtree(int64_t root, int64_t change, int64_t watch) {
    // a tree holds each node once, so the stack never outgrows the node count
    bool met = false;
    int32_t* const base = stack_.data();
    int32_t* top = base;
    *top++ = static_cast<int32_t>(root);
    while (top != base) {
        const int32_t node = *--top;
        met |= node == watch;
        bits[node] |= kChanged;
        const int64_t v = value[node] + change;
        if (v < 0) {
            value[node] = 0;
            CutParent(node);
            bits[node] &= ~(kRight | kLeft | kBelow | kAbove);
            continue;
        }
        value[node] = static_cast<int32_t>(v);
        // Children in the order right, left, below, above: pushed in reverse.
        const uint8_t b = bits[node];
        if (b & kAbove) *top++ = node - static_cast<int32_t>(stride);
        if (b & kBelow) *top++ = node + static_cast<int32_t>(stride);
        if (b & kLeft) *top++ = node - 1;
        if (b & kRight) *top++ = node + 1;
    }
    return met;
}

// Walking from `from` to its neighbour `to` changes the jump of the pair crossed.
void CMinimumDiscontinuity::Walk(int64_t from, int64_t to) {
    if (to == from + stride)
        --hJump[to];
    else if (to == from - stride)
        ++hJump[from];
    else if (to == from + 1)
        ++vJump[to];
    else
        --vJump[from];
}

void CMinimumDiscontinuity::RemoveLoop(int64_t a, int64_t b, int64_t delta) {
    Walk(a, b);
    for (int64_t node = a; node != b;) {
        ChangeSubtree(node, -int64_t{value[node]}, -1);
        const int64_t parent = Parent(node);
        if (parent < 0) {
            char text[80];
            std::snprintf(text, sizeof text, "Error: broken loop at col %d, row %d\n",
                          static_cast<int>(node % stride), static_cast<int>(node / stride));
            Host().Message(text);
            std::exit(1);
        }
        bits[parent] &= ~ChildBit(parent, node);
        Walk(parent, node);
        node = parent;
    }
    ChangeSubtree(b, -delta, -1);
}

void CMinimumDiscontinuity::Integrate() {
    const int64_t w = width, h = height;
    for (int64_t i = 0; i + 1 < w; ++i) {
        const float d = out_[i + 1] - out_[i] + 1e-6f;
        out_[i + 1] += static_cast<float>(hJump[stride + i + 1] - Nearest(d));
    }
    for (int64_t j = 1; j < h; ++j)
        for (int64_t i = 0; i < w; ++i) {
            const float d = out_[j * w + i] - out_[(j - 1) * w + i] + 1e-6f;
            out_[j * w + i] += static_cast<float>(vJump[j * stride + i + 1] - Nearest(d));
        }
}

int UnwrapMinimumDiscontinuity(const float* phase, const float* quality, float* out, int64_t width,
                               int64_t height) {
    if (width <= 0 || height <= 0) return 0;
    CMinimumDiscontinuity solver(phase, quality, out, width, height);
    solver.Run();
    return 0;
}
