#include "display/binary_copy.h"

#include <cstdint>
#include <cstring>

#include "core/data_space.h"
#include "core/element_type.h"

namespace {

constexpr char kTag[8] = {'Q', 'M', 'B', 'C', 'O', 'P', 'Y', '1'};

struct CHeader {
    char tag[8];
    int32_t type;
    int32_t pad;
    uint64_t res[6];
    float mm[6];
    char name[128];
};

}  // namespace

std::string BinaryCopy(const CZrkData* a) {
    if (!a || !a->Data()) return {};
    CHeader h{};
    std::memcpy(h.tag, kTag, sizeof kTag);
    h.type = a->Type();
    a->GetRes(h.res);
    std::memcpy(h.mm, a->mm, sizeof h.mm);
    std::memcpy(h.name, a->name, sizeof h.name);
    h.name[127] = 0;
    std::string out(reinterpret_cast<const char*>(&h), sizeof h);
    out.append(static_cast<const char*>(a->Data()), a->Bytes());
    return out;
}

CZrkData* BinaryPaste(const std::string& bytes, CDataSpace& space) {
    CHeader h;
    if (bytes.size() < sizeof h) return nullptr;
    std::memcpy(&h, bytes.data(), sizeof h);
    if (std::memcmp(h.tag, kTag, sizeof kTag) != 0 || h.type < 0 || h.type >= TYPE_COUNT ||
        !IsValidType(h.type))
        return nullptr;
    CZrkData probe;
    probe.SetHeader(h.type, h.res[0], h.res[1], h.res[2], h.res[3], h.res[4], h.res[5]);
    for (uint64_t r : h.res)
        if (r == 0) return nullptr;
    if (probe.Bytes() != bytes.size() - sizeof h) return nullptr;
    h.name[127] = 0;
    CZrkData* a = space.NewData(h.type, h.res[0], h.res[1], h.res[2], h.res[3], h.res[4], h.res[5],
                                h.name[0] ? h.name : "paste");
    if (!a) return nullptr;
    std::memcpy(a->Data(), bytes.data() + sizeof h, probe.Bytes());
    std::memcpy(a->mm, h.mm, sizeof h.mm);
    a->changed = 1;
    return a;
}
