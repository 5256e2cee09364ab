// The load model on lists of entries of a test kind whose headers come from a table: the
// stack's direction, where it ends, the dest of each entry and the summed array; RGB
// triples; failures half-way; the naming rules; the display and history it asks for.
#include <map>

#include "display/display_entry.h"
#include "files/file_dispatch.h"
#include "tests/files/open_save_fixture.h"

namespace files_test {
namespace {

constexpr int kTestCode = 90;

struct CFake {
    int type = TYPE_I2;
    res_t res[6] = {4, 3, 1, 1, 1, 1};
    int rgb = 0;
    bool fail_load = false;
};
std::map<std::string, CFake>& Fakes() {
    static std::map<std::string, CFake> fakes;
    return fakes;
}

int FakeHeader(const COpenOptions&, FileEntry& e) {
    auto it = Fakes().find(e.path);
    if (it == Fakes().end()) {
        e.status = "no such fake";
        return 0;
    }
    const CFake& f = it->second;
    e.header.SetHeader(f.type, f.res[0], f.res[1], f.res[2], f.res[3], f.res[4], f.res[5]);
    e.header.SetMm(0.5f, 0.75f, 2, 1, 1, 1);
    e.isRgb = f.rgb;
    e.exam = 2;
    e.series = 700;
    e.image = static_cast<int>(e.path.size());
    e.status = "header success";
    return 1;
}

// Every sample of entry `path` becomes the entry's number (the digits of its path).
int FakeLoad(const COpenOptions&, FileEntry& e, CZrkData* const targets[3]) {
    if (Fakes()[e.path].fail_load) {
        e.status = "read failed";
        return 0;
    }
    const double mark = std::stod(e.path.substr(1));
    for (int k = 0; k < (e.isRgb ? 3 : 1); ++k) {
        if (!EntryFitsTarget(e, *targets[k])) return 0;
        CDataCursor<double> out(targets[k]);
        const CZrkData& h = e.header;
        for (res_t v = 0; v < h.nv; ++v)
            for (res_t u = 0; u < h.nu; ++u)
                for (res_t t = 0; t < h.nt; ++t)
                    for (res_t z = 0; z < h.nz; ++z)
                        for (res_t y = 0; y < h.ny; ++y)
                            for (res_t x = 0; x < h.nx; ++x) {
                                const char* at =
                                    targets[k]->Address(x, y, e.dest[0] + z, e.dest[1] + t,
                                                        e.dest[2] + u, e.dest[3] + v);
                                out.SetI(mark + 100 * k,
                                         static_cast<uint64_t>(
                                             at - static_cast<char*>(targets[k]->Data())) /
                                             targets[k]->ElementBytes());
                            }
    }
    e.status = "reading complete";
    return 1;
}

class LoadModel : public OpenSaveTest {
  protected:
    void SetUp() override {
        OpenSaveTest::SetUp();
        static const bool registered = [] {
            RegisterReader(kTestCode, {.header = FakeHeader, .load = FakeLoad});
            return true;
        }();
        (void)registered;
        Fakes().clear();
    }
    // Entries "/1", "/2", ... with the fakes given.
    std::vector<FileEntry> Entries(const std::vector<CFake>& fakes) {
        std::vector<FileEntry> entries(fakes.size());
        for (size_t k = 0; k < fakes.size(); ++k) {
            char path[32];
            std::snprintf(path, sizeof path, "/%zu", k + 1);
            entries[k].path = path;
            entries[k].code = kTestCode;
            Fakes()[entries[k].path] = fakes[k];
        }
        return entries;
    }
    static CFake Sized(res_t x, res_t y, res_t z, res_t t = 1, res_t u = 1, res_t v = 1) {
        CFake f;
        const res_t r[6] = {x, y, z, t, u, v};
        std::copy(r, r + 6, f.res);
        return f;
    }
    double At(const CZrkData* a, res_t x, res_t y, res_t z, res_t t = 0, res_t u = 0, res_t v = 0) {
        CDataCursor<double> in(a);
        const char* p = a->Address(x, y, z, t, u, v);
        return in.Get(static_cast<uint64_t>(p - static_cast<char*>(a->Data())) / a->ElementBytes());
    }
};

TEST_F(LoadModel, StackDirectionComesFromTheFirstEntry) {
    const struct {
        CFake first;
        int direction;
    } table[] = {
        {Sized(4, 3, 1), 2},    {Sized(4, 3, 5), 3},       {Sized(4, 3, 5, 2), 4},
        {Sized(4, 3, 1, 2), 5}, {Sized(4, 3, 5, 1, 2), 5}, {Sized(4, 3, 1, 1, 1, 3), 5},
    };
    for (const auto& row : table) {
        std::vector<FileEntry> entries = Entries({row.first, row.first});
        const CStackPlan plan =
            PlanStack(entries, 0, [&](FileEntry& e) { return ReadHeader(open_, e) == 1; });
        EXPECT_EQ(plan.direction, row.direction) << row.first.res[2] << " " << row.first.res[3];
        EXPECT_EQ(plan.count, 2u);
        res_t want[6];
        std::copy(row.first.res, row.first.res + 6, want);
        want[row.direction] *= 2;
        EXPECT_TRUE(std::equal(want, want + 6, plan.res));
    }
}

TEST_F(LoadModel, StackEndsAtTheFirstMismatch) {
    CFake other_type = Sized(4, 3, 1);
    other_type.type = TYPE_N2;
    CFake rgb = Sized(4, 3, 1);
    rgb.rgb = 1;
    const struct {
        const char* what;
        std::vector<CFake> fakes;
        size_t count;
    } table[] = {
        {"x differs", {Sized(4, 3, 1), Sized(4, 3, 1), Sized(5, 3, 1), Sized(4, 3, 1)}, 2},
        {"y differs", {Sized(4, 3, 1), Sized(4, 2, 1)}, 1},
        {"t differs along t", {Sized(4, 3, 2, 1), Sized(4, 3, 2, 1), Sized(4, 3, 3, 1)}, 2},
        {"all match along u", {Sized(4, 3, 2, 2), Sized(4, 3, 2, 2), Sized(4, 3, 2, 2)}, 3},
        {"type differs", {Sized(4, 3, 1), other_type}, 1},
        {"rgb differs", {Sized(4, 3, 1), rgb}, 1},
        {"all match", {Sized(4, 3, 1), Sized(4, 3, 1), Sized(4, 3, 1)}, 3},
    };
    for (const auto& row : table) {
        std::vector<FileEntry> entries = Entries(row.fakes);
        const CStackPlan plan =
            PlanStack(entries, 0, [&](FileEntry& e) { return ReadHeader(open_, e) == 1; });
        EXPECT_EQ(plan.count, row.count) << row.what;
    }
    // A file whose header fails ends the stack too.
    std::vector<FileEntry> entries = Entries({Sized(4, 3, 1), Sized(4, 3, 1)});
    entries[1].path = "/missing";
    EXPECT_EQ(PlanStack(entries, 0, [&](FileEntry& e) { return ReadHeader(open_, e) == 1; }).count,
              1u);
}

TEST_F(LoadModel, StackedEntriesLandAtTheirDest) {
    std::vector<FileEntry> entries =
        Entries({Sized(4, 3, 2), Sized(4, 3, 2), Sized(4, 3, 2), Sized(5, 3, 2)});
    open_.name_is_file = 4;
    CLoadModel load(open_, space_, entries);
    load.typed_name = "wave";
    EXPECT_EQ(load.LoadInStack(), 1);
    const CZrkData* a = space_.FindData("wave");
    ASSERT_NE(a, nullptr);
    EXPECT_EQ(a->ResText(), "[4][3][2][3]");
    EXPECT_EQ(a->mm[0], 0.5f);
    EXPECT_EQ(a->mm[1], 0.75f);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(entries[k].dest[1], static_cast<uint64_t>(k));
        EXPECT_EQ(At(a, 3, 2, 1, k), k + 1);
        EXPECT_EQ(At(a, 0, 0, 0, k), k + 1);
    }
    // The mismatch is the next entry shown; the rest load on their own.
    EXPECT_EQ(load.Current(), &entries[3]);
    EXPECT_FALSE(load.Done());
    load.typed_name = "";
    EXPECT_EQ(load.Load1(), 1);
    EXPECT_TRUE(load.Done());
    EXPECT_NE(space_.FindData("4"), nullptr);
    EXPECT_EQ(load.loaded, (std::vector<std::string>{"wave", "4"}));
}

TEST_F(LoadModel, FailuresDropWhatTheyMadeAndSaySo) {
    std::vector<FileEntry> entries = Entries({Sized(4, 3, 1), Sized(4, 3, 1), Sized(4, 3, 1)});
    Fakes()["/2"].fail_load = true;
    CLoadModel load(open_, space_, entries);
    EXPECT_EQ(load.LoadInStack(), 0);
    EXPECT_EQ(space_.Count(), 0);
    EXPECT_EQ(host_.history.back(), "load stack failed\r\n");
    EXPECT_EQ(host_.status.back(), "read failed");
    EXPECT_EQ(load.failure, "read failed");

    std::vector<FileEntry> single = Entries({Sized(4, 3, 1), Sized(4, 3, 1), Sized(4, 3, 1)});
    Fakes()["/2"].fail_load = true;
    CLoadModel each(open_, space_, single);
    EXPECT_EQ(each.LoadAllIndividually(), 0);
    // The first loaded, the second failed and ended the walk.
    EXPECT_EQ(space_.Count(), 1);
    EXPECT_EQ(each.index, 2u);
    EXPECT_EQ(host_.history.back(), "load one failed\r\n");
}

TEST_F(LoadModel, RgbFilesMakeThreeArrays) {
    CFake rgb = Sized(4, 3, 1);
    rgb.rgb = 1;
    rgb.type = TYPE_N1;
    std::vector<FileEntry> entries = Entries({rgb, rgb});
    open_.name_is_file = 4;
    CLoadModel load(open_, space_, entries);
    load.typed_name = "pic";
    EXPECT_EQ(load.LoadInStack(), 1);
    for (const char* name : {"pic.r", "pic.g", "pic.b"}) {
        const CZrkData* a = space_.FindData(name);
        ASSERT_NE(a, nullptr) << name;
        EXPECT_EQ(a->ResText(), "[4][3][2]");
    }
    EXPECT_EQ(At(space_.FindData("pic.b"), 1, 1, 1), 202);
}

TEST_F(LoadModel, NamingRules) {
    FileEntry e;
    e.title = "MR_small";
    e.exam = 2;
    e.series = 7;
    e.image = 12;
    e.code = 1;
    CZrkData plane, volume;
    plane.SetHeader(TYPE_I2, 16, 16, 1, 1, 1, 1);
    volume.SetHeader(TYPE_I2, 16, 16, 7, 1, 1, 1);
    open_.data_format = "run%02d";
    const struct {
        int rule, code;
        const CZrkData* header;
        const char* want;
        int rule_after;
    } table[] = {
        {1, 1, &plane, "MR_small", 1}, {2, 1, &plane, "e2s007i012", 2},
        {2, 7, &volume, "e2s007", 2},  {2, 12, &plane, "e2s007i012", 2},
        {2, 3, &plane, "MR_small", 1}, {3, 3, &plane, "run05", 3},
        {4, 3, &plane, "typed", 4},
    };
    for (const auto& row : table) {
        open_.name_is_file = row.rule;
        e.code = row.code;
        EXPECT_EQ(DataName(open_, e, *row.header, 5, "typed"), row.want)
            << row.rule << " " << row.code;
        EXPECT_EQ(open_.name_is_file, row.rule_after);
    }
    open_.name_is_file = 3;
    open_.data_format = "%s";
    EXPECT_EQ(DataName(open_, e, plane, 5, ""), "MR_small");

    // Rule 3 counts the files loaded.
    std::vector<FileEntry> entries = Entries({Sized(2, 2, 1), Sized(2, 2, 1), Sized(3, 2, 1)});
    open_.data_format = "d%d";
    CLoadModel load(open_, space_, entries);
    load.LoadAllIndividually();
    EXPECT_EQ(load.loaded, (std::vector<std::string>{"d0", "d1", "d2"}));
}

std::vector<CDisplayRequest>& Shown() {
    static std::vector<CDisplayRequest> shown;
    return shown;
}
float g_zoom = 0;
int g_iqmp = -1;
CDisplayEntry* Record(const CDisplayRequest& r) {
    Shown().push_back(r);
    g_zoom = r.look->Plane(0)->zoom[0];
    g_iqmp = r.look->Plane(0)->iqmp;
    return nullptr;
}

TEST_F(LoadModel, DisplayAndHistoryAsAsked) {
    const DisplayWindowHook old1 = SetDisplayWindow(KIND_1D, Record);
    const DisplayWindowHook old2 = SetDisplayWindow(KIND_2D, Record);
    const DisplayWindowHook old3 = SetDisplayWindow(KIND_RGB, Record);
    Shown().clear();
    CFake complex = Sized(4, 3, 1);
    complex.type = TYPE_CR4;
    CFake rgb = Sized(4, 3, 1);
    rgb.rgb = 1;
    std::vector<FileEntry> entries = Entries({Sized(4, 3, 1), complex, rgb, Sized(4, 3, 1)});
    open_.display[0] = 0;
    open_.display[2] = 1;
    open_.report = 1;
    CLoadModel load(open_, space_, entries);
    load.Load1();
    EXPECT_EQ(g_zoom, 100.0f);
    EXPECT_EQ(g_iqmp, 2);
    load.Load1();
    EXPECT_EQ(g_iqmp, 0);
    load.Load1();
    ASSERT_EQ(Shown().size(), 3u);
    EXPECT_EQ(Shown()[2].kind, static_cast<uint32_t>(KIND_RGB));
    EXPECT_EQ(std::string(Shown()[2].data[2]->name), "3.b");
    open_.display[2] = 0;
    open_.display[0] = 1;
    load.Load1();
    EXPECT_EQ(Shown().size(), 3u);
    EXPECT_EQ(host_.history, (std::vector<std::string>{"/1\r\n", "/2\r\n", "/3\r\n", "/4\r\n"}));
    SetDisplayWindow(KIND_1D, old1);
    SetDisplayWindow(KIND_2D, old2);
    SetDisplayWindow(KIND_RGB, old3);
}

TEST_F(LoadModel, TheOpenModelAnswersForTheWholeSelection) {
    Entries({Sized(2, 2, 1), Sized(2, 2, 1), Sized(2, 2, 1)});
    EXPECT_EQ(Open({"/3", "/1", "/2"}, kTestCode), "read success");
    EXPECT_EQ(folder_, "/");
    EXPECT_EQ(space_.Count(), 3);

    open_.filetype = kTestCode;
    COpenModel open(open_, space_, folder_);
    open.run_load = [](CLoadModel& load) {
        load.Skip();
        load.Quit();
    };
    EXPECT_EQ(open.Ok({"/1", "/2"}), 1);
    EXPECT_EQ(open.status, "read exit");
    open_.stay = 1;
    EXPECT_EQ(open.Ok({"/1"}), 0);

    EXPECT_EQ(Open({"/1"}, 10), "unknown file type");
    open_.filetype = 9;
    open.Open();
    EXPECT_EQ(open_.filetype, 6);
}

}  // namespace
}  // namespace files_test
