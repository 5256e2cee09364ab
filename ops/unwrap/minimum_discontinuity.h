// CMinimumDiscontinuity: the minimum weighted discontinuity solver behind
// UnwrapMinimumDiscontinuity, for one plane. The nodes are the corners between points
// (`stride` = width + 1 by `rows` = height + 1); each holds its value, the jumps of the
// pairs it lies below and right of, and its tree and pass bits.
//
//   CMinimumDiscontinuity solver(phase, quality, out, w, h);
//   solver.Run();
#pragma once

#include <cstdint>
#include <vector>

class CMinimumDiscontinuity {
  public:
    // Throws std::bad_alloc when the node arrays cannot be had.
    CMinimumDiscontinuity(const float* phase, const float* quality, float* out, int64_t w,
                          int64_t h);

    void Run();

    // The edge a -> b closes a loop through the tree from b down to a: every edge of the
    // loop changes its jump, and the loop's nodes start again from 0. A tree that does not
    // lead from a back to b is broken: the host is told where and the process ends.
    void RemoveLoop(int64_t a, int64_t b, int64_t delta);

    int64_t width, height, stride, rows;
    std::vector<int32_t> value;
    std::vector<int16_t> hJump, vJump;
    std::vector<uint8_t> bits;

  private:
    enum Sweep { kDown, kRightward, kUp, kLeftward };

    int32_t Weight(int64_t i, int64_t j) const;
    template <Sweep sweep>
    bool Relax(int64_t i, int64_t j);
    uint8_t ChildBit(int64_t from, int64_t to) const;
    void CutParent(int64_t node);
    int64_t Parent(int64_t node) const;
    bool ChangeSubtree(int64_t root, int64_t change, int64_t watch);
    void Walk(int64_t from, int64_t to);
    void Integrate();

    const float* phase_;
    const float* quality_;
    float* out_;
    std::vector<int32_t> stack_;
};
