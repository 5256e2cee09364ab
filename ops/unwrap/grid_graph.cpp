#include "ops/unwrap/grid_graph.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

int64_t Padded(int64_t n, int64_t block) { return ((n + 1) / block) * block + block; }

// Carves the next array of `bytes` from `*at`, leaving it on a 64-byte bound.
template <class T>
T* Carve(char** at, uint64_t count) {
    T* p = reinterpret_cast<T*>(*at);
    *at += (count * sizeof(T) + 63) & ~uint64_t{63};
    return p;
}

}  // namespace

template <int Dims>
uint64_t GridGraph<Dims>::BlockBytes(uint64_t n) {
    return Dims == 2 ? 46 * n + 832 : 58 * n + 1024;
}

template <int Dims>
GridGraph<Dims>::GridGraph(int64_t width, int64_t height, int64_t depth)
    : width_(width), height_(height), depth_(Dims == 2 ? 1 : depth) {
    const int64_t block = Dims == 2 ? 8 : 4;
    pw_ = Padded(width_, block);
    ph_ = Padded(height_, block);
    pd_ = Dims == 2 ? 1 : Padded(depth_, block);
    if (width_ < 1 || height_ < 1 || depth_ < 1) throw GridBadAlloc();
    // Node indices are 32-bit; a larger grid is as impossible as an allocation too large.
    const double count = static_cast<double>(pw_) * ph_ * pd_;
    if (count >= std::numeric_limits<int32_t>::max()) throw GridBadAlloc();
    n_ = pw_ * ph_ * pd_;
    if constexpr (Dims == 2) {
        row_step_ = static_cast<int32_t>((pw_ / 8) * 64 - 56);
    } else {
        row_step_ = static_cast<int32_t>((pw_ / 4) * 64 - 12);
        slice_step_ = static_cast<int32_t>((pw_ / 4) * (ph_ / 4) * 64 - 48);
    }
    const uint64_t bytes = BlockBytes(static_cast<uint64_t>(n_));
    // 64 bytes more than asked, to put the first array on a 64-byte bound.
    block_ = std::calloc(1, bytes + 64);
    if (!block_) throw GridBadAlloc();
    char* at = reinterpret_cast<char*>((reinterpret_cast<uintptr_t>(block_) + 63) & ~uintptr_t{63});
    const uint64_t n = static_cast<uint64_t>(n_);
    label = Carve<uint8_t>(&at, n);
    parentDir = Carve<uint8_t>(&at, n);
    parent = Carve<int32_t>(&at, n);
    for (int d = 0; d < kDirs; ++d) residual_[d] = Carve<float>(&at, n);
    terminalResidual = Carve<float>(&at, n);
    timestamp = Carve<int32_t>(&at, n);
    activeNext = Carve<int32_t>(&at, n);
    orphanFifo_ = Carve<int32_t>(&at, n);
    orphanStack_ = Carve<int32_t>(&at, n);
    // The rest of the block (one array in 2-D, two in 3-D) stays in reserve.
    for (uint64_t k = 0; k < n; ++k) parentDir[k] = kNone;
}

template <int Dims>
GridGraph<Dims>::~GridGraph() {
    std::free(block_);
}

template <int Dims>
int32_t GridGraph<Dims>::Node(int64_t x, int64_t y, int64_t z) const {
    const int64_t X = x + 1, Y = y + 1;
    if constexpr (Dims == 2) {
        (void)z;
        return static_cast<int32_t>((Y * 8 & ~int64_t{63}) * (pw_ / 8) + (Y & 7) * 8 +
                                    (X * 8 & ~int64_t{63}) + (X & 7));
    } else {
        const int64_t Z = z + 1;
        const int64_t blockIndex = ((Z >> 2) * (ph_ / 4) + (Y >> 2)) * (pw_ / 4) + (X >> 2);
        return static_cast<int32_t>(blockIndex * 64 + (Z & 3) * 16 + (Y & 3) * 4 + (X & 3));
    }
}

template <int Dims>
void GridGraph<Dims>::Load(const double* source, const double* sink, const double* const* caps) {
    const int64_t dx[6] = {-1, 1, 0, 0, 0, 0}, dy[6] = {0, 0, -1, 1, 0, 0},
                  dz[6] = {0, 0, 0, 0, -1, 1};
    int64_t p = 0;
    for (int64_t z = 0; z < depth_; ++z)
        for (int64_t y = 0; y < height_; ++y)
            for (int64_t x = 0; x < width_; ++x, ++p) {
                const int32_t i = Node(x, y, z);
                for (int d = 0; d < kDirs; ++d) {
                    const int64_t qx = x + dx[d], qy = y + dy[d], qz = z + dz[d];
                    const bool inside =
                        qx >= 0 && qx < width_ && qy >= 0 && qy < height_ && qz >= 0 && qz < depth_;
                    SetResidual(i, d,
                                inside ? static_cast<float>(std::max(caps[d][p], 0.0)) : 0.0f);
                }
                double s = source[p], t = sink[p];
                if (s > 0 && t > 0) {
                    const double m = std::min(s, t);
                    flow += static_cast<float>(m);
                    s -= m;
                    t -= m;
                }
                if (s > t) {
                    SetLabel(i, 1);
                    terminalResidual[i] = static_cast<float>(s - t);
                    parentDir[i] = kTerminal;
                } else if (t > s) {
                    SetLabel(i, 2);
                    terminalResidual[i] = static_cast<float>(t - s);
                    parentDir[i] = kTerminal;
                }
            }
    p = 0;
    for (int64_t z = 0; z < depth_; ++z)
        for (int64_t y = 0; y < height_; ++y)
            for (int64_t x = 0; x < width_; ++x, ++p) {
                const int32_t i = Node(x, y, z);
                const int tree = Label(i);
                if (!tree) continue;
                for (int d = 0; d < kDirs; ++d) {
                    const int32_t j = Neighbour(i, d);
                    const bool reach = tree == 1 ? Label(j) != 1 && Open(i, d)
                                                 : Label(j) == 0 && Open(j, Opposite(d));
                    if (reach) {
                        Activate(i);
                        break;
                    }
                }
            }
}

template <int Dims>
void GridGraph<Dims>::Activate(int32_t i) {
    if (activeNext[i]) return;
    activeNext[i] = i;  // the last node points at itself
    if (activeHead_)
        activeNext[activeTail_] = i;
    else
        activeHead_ = i;
    activeTail_ = i;
}

template <int Dims>
int32_t GridGraph<Dims>::NextActive() {
    const int32_t i = activeHead_;
    const int32_t next = activeNext[i];
    activeHead_ = next == i ? 0 : next;
    activeNext[i] = 0;
    return activeHead_;
}

template <int Dims>
bool GridGraph<Dims>::Grow(int32_t* from, int32_t* dir) {
    while (activeHead_) {
        const int32_t i = activeHead_;
        const int tree = Label(i);
        if (tree == 1) {
            for (int d = 0; d < kDirs; ++d) {
                if (!Open(i, d)) continue;
                const int32_t j = Neighbour(i, d);
                const int lj = Label(j);
                if (lj == 2) {
                    *from = i;
                    *dir = d;
                    return true;
                }
                if (lj == 0) {
                    SetLabel(j, 1);
                    parent[j] = i;
                    parentDir[j] = static_cast<uint8_t>(Opposite(d));
                    timestamp[j] = timestamp[i];
                    Activate(j);
                }
            }
        } else if (tree == 2) {
            for (int d = 0; d < kDirs; ++d) {
                const int32_t j = Neighbour(i, d);
                if (!Open(j, Opposite(d))) continue;
                const int lj = Label(j);
                if (lj == 1) {
                    *from = j;
                    *dir = Opposite(d);
                    return true;
                }
                if (lj == 0) {
                    SetLabel(j, 2);
                    parent[j] = i;
                    parentDir[j] = static_cast<uint8_t>(Opposite(d));
                    timestamp[j] = timestamp[i];
                    Activate(j);
                }
            }
        }
        NextActive();
    }
    return false;
}

template <int Dims>
void GridGraph<Dims>::Orphan(int32_t i) {
    parentDir[i] = kNone;
    int64_t tail = orphanHead_ + orphanCount_;
    if (tail >= n_) tail -= n_;
    orphanFifo_[tail] = i;
    ++orphanCount_;
}

template <int Dims>
void GridGraph<Dims>::Augment(int32_t from, int dir) {
    // The two walks up to the terminals are long; each is taken once and its nodes kept
    // (source side from the start of the orphan stack, sink side from its end: the trees
    // are disjoint) so that moving the flow does not chase the parents again.
    int32_t* const path = orphanStack_;
    const int32_t to = Neighbour(from, dir);
    float b = residual_[dir][from];
    int64_t sourceLength = 0, sinkFirst = n_;
    int32_t i = from;
    for (; parentDir[i] != kTerminal; i = parent[i]) {
        path[sourceLength++] = i;
        b = std::min(b, residual_[Opposite(parentDir[i])][parent[i]]);
    }
    const int32_t sourceRoot = i;
    b = std::min(b, terminalResidual[i]);
    for (i = to; parentDir[i] != kTerminal; i = parent[i]) {
        path[--sinkFirst] = i;
        b = std::min(b, residual_[parentDir[i]][i]);
    }
    const int32_t sinkRoot = i;
    b = std::min(b, terminalResidual[i]);

    SetResidual(from, dir, residual_[dir][from] - b);
    SetResidual(to, Opposite(dir), residual_[Opposite(dir)][to] + b);
    // Source side: flow runs parent to child.
    for (int64_t k = 0; k < sourceLength; ++k) {
        i = path[k];
        const int pd = parentDir[i];
        const int32_t p = parent[i];
        const int down = Opposite(pd);
        SetResidual(p, down, residual_[down][p] - b);
        SetResidual(i, pd, residual_[pd][i] + b);
        if (!(residual_[down][p] > 0)) Orphan(i);
    }
    terminalResidual[sourceRoot] -= b;
    if (terminalResidual[sourceRoot] <= 0) {
        terminalResidual[sourceRoot] = 0;
        Orphan(sourceRoot);
    }
    // Sink side: flow runs child to parent.
    for (int64_t k = n_ - 1; k >= sinkFirst; --k) {
        i = path[k];
        const int pd = parentDir[i];
        const int32_t p = parent[i];
        SetResidual(i, pd, residual_[pd][i] - b);
        SetResidual(p, Opposite(pd), residual_[Opposite(pd)][p] + b);
        if (!(residual_[pd][i] > 0)) Orphan(i);
    }
    terminalResidual[sinkRoot] -= b;
    if (terminalResidual[sinkRoot] <= 0) {
        terminalResidual[sinkRoot] = 0;
        Orphan(sinkRoot);
    }
    flow += b;
}

template <int Dims>
bool GridGraph<Dims>::Rooted(int32_t i) {
    int64_t length = 0;
    for (;;) {
        if (timestamp[i] == time_) break;
        const int pd = parentDir[i];
        if (pd == kTerminal) break;
        if (pd == kNone) return false;
        orphanStack_[length++] = i;
        i = parent[i];
    }
    for (int64_t k = 0; k < length; ++k) timestamp[orphanStack_[k]] = time_;
    return true;
}

template <int Dims>
void GridGraph<Dims>::Adopt() {
    while (orphanCount_) {
        const int32_t i = orphanFifo_[orphanHead_];
        if (++orphanHead_ == n_) orphanHead_ = 0;
        --orphanCount_;
        const int tree = Label(i);
        // First fit in neighbour order: a neighbour of the same tree with capacity on the
        // tree's side and a path to its terminal.
        bool adopted = false;
        for (int d = 0; d < kDirs && !adopted; ++d) {
            const int32_t j = Neighbour(i, d);
            if (Label(j) != tree) continue;
            if (!(tree == 1 ? Open(j, Opposite(d)) : Open(i, d))) continue;
            if (!Rooted(j)) continue;
            parent[i] = j;
            parentDir[i] = static_cast<uint8_t>(d);
            timestamp[i] = time_;
            adopted = true;
        }
        if (adopted) continue;
        // Free now: its children are orphans, and any tree that can grow into it again,
        // its own or the other, goes back to the active queue. The other matters for the
        // cut: every node that can still reach the sink must end in the sink tree.
        for (int d = 0; d < kDirs; ++d) {
            const int32_t j = Neighbour(i, d);
            const int lj = Label(j);
            if (lj == tree && parentDir[j] == Opposite(d) && parent[j] == i) Orphan(j);
            if ((lj == 1 && Open(j, Opposite(d))) || (lj == 2 && Open(i, d))) Activate(j);
        }
        SetLabel(i, 0);
    }
}

template <int Dims>
float GridGraph<Dims>::MaxFlow() {
    int32_t from = 0, dir = 0;
    while (Grow(&from, &dir)) {
        ++time_;
        Augment(from, dir);
        Adopt();
    }
    return flow;
}

template class GridGraph<2>;
template class GridGraph<3>;
