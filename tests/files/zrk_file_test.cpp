// The workspace file: round trips of every type and display kind, its exact texts, the
// behaviour it keeps on purpose, and damaged input.
#include "files/zrk_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "files/file_entry.h"
#include "tests/files/workspace_fixture.h"
#include "tests/peer.h"

using ws::Slurp;
using ws::Spit;

namespace {

struct Snapshot {
    std::string name;
    int type;
    res_t res[6];
    float mm[6];
    std::string bytes;
};

std::vector<Snapshot> Arrays() {
    std::vector<Snapshot> out;
    const CDataSpace& s = GlobalDataSpace();
    for (int k = 0; k < s.Count(); ++k) {
        const CZrkData* a = s.GetData(k);
        Snapshot snap{a->name, a->type, {}, {}, {}};
        a->GetRes(snap.res);
        std::memcpy(snap.mm, a->mm, sizeof snap.mm);
        if (a->Data()) snap.bytes.assign(static_cast<const char*>(a->Data()), a->Bytes());
        out.push_back(snap);
    }
    return out;
}

void ExpectSameArrays(const std::vector<Snapshot>& got, const std::vector<Snapshot>& want) {
    ASSERT_EQ(got.size(), want.size());
    for (size_t k = 0; k < got.size(); ++k) {
        EXPECT_EQ(got[k].name, want[k].name);
        EXPECT_EQ(got[k].type, want[k].type) << want[k].name;
        EXPECT_EQ(0, std::memcmp(got[k].res, want[k].res, sizeof got[k].res)) << want[k].name;
        EXPECT_EQ(0, std::memcmp(got[k].mm, want[k].mm, sizeof got[k].mm)) << want[k].name;
        EXPECT_TRUE(got[k].bytes == want[k].bytes) << want[k].name;
    }
}

// A small head with `body` behind it.
std::string Head(const std::string& body) {
    return "zarnik win99\nnbytes= 0\nncount= 0\nhistory= 0\nend \n" + body;
}

class ZrkFile : public ws::WorkspaceTest {
  protected:
    // Writes `bytes` as a file and reads it into the global spaces.
    int ReadText(const std::string& bytes, std::string* status) {
        // A new file each time: truncating one in place makes the file system flush it.
        std::filesystem::remove(Path("in.zrk"));
        Spit(Path("in.zrk"), bytes);
        CZrkFile f(Path("in.zrk"));
        const int result = f.Read();
        *status = f.status;
        return result;
    }
};

}  // namespace

TEST_F(ZrkFile, EverythingRoundTrips) {
    BuildState();
    const std::vector<Snapshot> before = Arrays();
    const std::string first = Path("first.zrk"), second = Path("second.zrk");
    CZrkFile w(first);
    ASSERT_EQ(w.Write(), 1);
    EXPECT_EQ(w.status, "save complete");
    ws::ClearSpaces();
    host_.history_text = "old text\r\n";

    CZrkFile r(first);
    ASSERT_EQ(r.Read(), 0) << r.status;
    EXPECT_EQ(r.status, "read complete");
    ExpectSameArrays(Arrays(), before);
    // The history was cleared, then filled from the file, lines cut to 127.
    EXPECT_EQ(host_.history_text.rfind("a = 1\r\n" + std::string(127, 'h') + "\r\nreading ", 0),
              0u);
    EXPECT_TRUE(host_.history_text.ends_with("read complete\r\n"));

    ASSERT_EQ(GlobalWindowSpace().Count(), 4);
    auto* w2 = dynamic_cast<CDisplayEntry*>(GlobalWindowSpace().FindByName("i 00\nsecond line"));
    ASSERT_TRUE(w2);
    EXPECT_EQ(w2->kind, KIND_2D);
    EXPECT_EQ(w2->caption, "magnitude, slice 3\nechoes summed");
    EXPECT_EQ(w2->page_z, 2);
    EXPECT_EQ(w2->page_t, 1);
    EXPECT_EQ(w2->minimized, 1);
    EXPECT_EQ(w2->window_loc.right, 400);
    EXPECT_STREQ(w2->data[0]->name, "img");
    ASSERT_TRUE(w2->look.palplane.palette);
    EXPECT_STREQ(w2->look.palplane.palette->source, "lut");
    EXPECT_EQ(w2->look.palplane.window, 120.5f);
    auto* rgb = dynamic_cast<CDisplayEntry*>(GlobalWindowSpace().FindByName("rgb00"));
    ASSERT_TRUE(rgb);
    EXPECT_EQ(rgb->kind, KIND_RGB);
    EXPECT_STREQ(rgb->data[0]->name, "red");
    EXPECT_EQ(rgb->data[1], nullptr);
    EXPECT_STREQ(rgb->data[2]->name, "blue");
    EXPECT_EQ(rgb->look.gplane.level, 7.0f);

    // Saved again, the file is the same behind its history.
    ASSERT_EQ(CZrkFile(second).Write(), 1);
    const std::string a = Slurp(first), b = Slurp(second);
    const size_t body_a = a.find("end \nview_data="), body_b = b.find("end \nview_data=");
    ASSERT_NE(body_a, std::string::npos);
    EXPECT_TRUE(a.substr(body_a) == b.substr(body_b));
    // ...and byte for byte once the history is the same.
    host_.history_text = "a = 1\r\n" + std::string(200, 'h') + "\r\n";
    ASSERT_EQ(CZrkFile(second).Write(), 1);
    EXPECT_TRUE(Slurp(second) == a);
}

TEST_F(ZrkFile, TextsAreExact) {
    CZrkData* a = GlobalDataSpace().NewData(TYPE_CI2, 2, 1, 1, 1, 1, 1, "a b");
    std::memset(a->Data(), 'A', a->Bytes());
    a->SetMm(1, 2, 3, 4, 5, 6.5f);
    GlobalDataSpace().NewData(TYPE_R4, 0, 1, 1, 1, 1, 1, "empty");
    CDisplayEntry* rgb = ws::AddWindow(KIND_RGB, nullptr, a, nullptr, "c");
    rgb->caption = "x y";
    Host().History("one\r\n");
    ASSERT_EQ(CZrkFile(Path("t.zrk")).Write(), 1);
    const std::string text = Slurp(Path("t.zrk"));
    EXPECT_EQ(text.rfind("zarnik win99\nnbytes= 8\nncount= 1\nhistory= 1\none\nend \n"
                         "view_data= a b\ntypen= 10 complex i2\nres6= 2 1 1 1 1 1\n"
                         "mm6= 1.000000 2.000000 3.000000 4.000000 5.000000 6.500000\n"
                         "data=\nAAAAAAAADPYRGB= \na b\n\ncaption= 3 x y\n"
                         "pages= 0 0 0 0\nminimized= 0\nwindow_loc= 0 0 0 0\nlook= \n",
                         0),
              0u)
        << text;
    EXPECT_TRUE(text.ends_with("endlook \nendrgb \n"));

    // The header step, its count wrapping as a 32-bit number.
    CZrkFile h(Path("t.zrk"));
    EXPECT_EQ(h.ReadHeader(), 1);
    EXPECT_EQ(h.status, "8 bytes in 1 data sets");
    Spit(Path("big.zrk"), "zarnik win99\nnbytes= 3000000000\nncount= 2\n");
    CZrkFile big(Path("big.zrk"));
    EXPECT_EQ(big.ReadHeader(), 1);
    EXPECT_EQ(big.status, "-1294967296 bytes in 2 data sets");
    Spit(Path("none.zrk"), Head(""));
    CZrkFile none(Path("none.zrk"));
    EXPECT_EQ(none.ReadHeader(), 1);
    EXPECT_EQ(none.status, "");
    Spit(Path("bad.zrk"), "zarnik_win99\n");
    CZrkFile bad(Path("bad.zrk"));
    EXPECT_EQ(bad.ReadHeader(), 0);
    EXPECT_EQ(bad.status, "invalid header");

    // Failures of reading and writing.
    CZrkFile missing(Path("missing.zrk"));
    EXPECT_EQ(missing.Read(), 1);
    EXPECT_EQ(missing.status, "can't open file\n'" + Path("missing.zrk") + "'\nfor reading");
    EXPECT_EQ(bad.Read(), 1);
    EXPECT_EQ(bad.status, "invalid header");
    CZrkFile nowhere(Path("no/such/folder.zrk"));
    EXPECT_EQ(nowhere.Write(), 0);
    EXPECT_EQ(nowhere.status, "file create failed");
    EXPECT_EQ(host_.messages.back(), "file create failed");
}

TEST_F(ZrkFile, EmptySpaceIsAHeadAndClearsTheHistory) {
    host_.history_text = "before\r\n";
    ASSERT_EQ(CZrkFile(Path("e.zrk")).Write(), 1);
    EXPECT_EQ(Slurp(Path("e.zrk")),
              "zarnik win99\nnbytes= 0\nncount= 0\nhistory= 1\nbefore\nend \n");
    host_.history_text = "lost\r\n";
    std::string status;
    EXPECT_EQ(ReadText(Head(""), &status), 0);
    EXPECT_EQ(status, "read complete");
    EXPECT_EQ(host_.history_text, "reading " + Path("in.zrk") + "\r\nread complete\r\n");
}

TEST_F(ZrkFile, KeptQuirks) {
    std::string status;
    // A window on an array of no bytes: the array is dropped, its window's block fails.
    CZrkData* kept = ws::RandomArray("kept", TYPE_R4, {3}, 1);
    CZrkData* empty = GlobalDataSpace().NewData(TYPE_R4, 0, 1, 1, 1, 1, 1, "nothing");
    ws::AddWindow(KIND_2D, empty, nullptr, nullptr, "i00");
    ASSERT_EQ(CZrkFile(Path("z.zrk")).Write(), 1);
    const std::string saved = Slurp(Path("z.zrk"));
    ws::ClearSpaces();
    EXPECT_EQ(ReadText(saved, &status), 1);
    EXPECT_EQ(status, "read error");
    EXPECT_TRUE(GlobalDataSpace().FindData("kept"));
    EXPECT_EQ(host_.history.back(), "read failed\r\n");

    // Reading over a live array keeps its contents in its undo.
    ws::ClearSpaces();
    kept = ws::RandomArray("kept", TYPE_R4, {3}, 1);
    const std::string file_bytes(static_cast<const char*>(kept->Data()), 12);
    ASSERT_EQ(CZrkFile(Path("k.zrk")).Write(), 1);
    std::memset(kept->Data(), 0, 12);
    EXPECT_EQ(CZrkFile(Path("k.zrk")).Read(), 0);
    EXPECT_EQ(GlobalDataSpace().Count(), 1);
    EXPECT_EQ(std::string(static_cast<const char*>(kept->Data()), 12), file_bytes);
    ASSERT_TRUE(kept->HasUndo());
    EXPECT_EQ(std::string(static_cast<const char*>(kept->undo_data), 12), std::string(12, '\0'));
    EXPECT_EQ(kept->undo_text, "undo open");

    // A block whose array shows already is not consumed: its next word fails the read.
    ws::AddWindow(KIND_1D, kept, nullptr, nullptr, "p00");
    ASSERT_EQ(CZrkFile(Path("w.zrk")).Write(), 1);
    EXPECT_EQ(CZrkFile(Path("w.zrk")).Read(), 1);
    EXPECT_EQ(GlobalWindowSpace().Count(), 1);

    // With no factory the display blocks are read and dropped.
    ws::InstallFactory(nullptr);
    ws::ClearSpaces();
    EXPECT_EQ(CZrkFile(Path("w.zrk")).Read(), 0);
    EXPECT_EQ(GlobalWindowSpace().Count(), 0);
}

TEST_F(ZrkFile, OldFormsAndTheForeignFlavour) {
    std::string status;
    // Big-endian i2 and complex r4, three sizes, old keys.
    std::string body =
        "zarnik foreign\nnbytes= 8\nncount= 2\nhistory= 0\nend \nview_data= s\ntype= i2\n"
        "res= 2 2 1\nmm= 0.5 2 3 4\ndata=\n";
    body += std::string("\x00\x01\x00\x02\xff\xfe\x01\x00", 8);
    body += "view_data= c\ntype= complex r4\nres6= 1 1 1\ndata=\n";
    body += std::string("\x3f\x80\x00\x00\xc0\x00\x00\x00", 8);
    body += "dpy= 2\nzoom= 200 300\npan= 5 6\niqmp= 1\nwindow= 9\nend2d \n";
    ASSERT_EQ(ReadText(body, &status), 0) << status;
    const CZrkData* s = GlobalDataSpace().FindData("s");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->type, TYPE_I2);
    EXPECT_EQ(s->nx * s->ny * s->nz * s->nt * s->nu * s->nv, 4u);
    const auto* v = static_cast<const int16_t*>(s->Data());
    EXPECT_EQ(v[0], 1);
    EXPECT_EQ(v[1], 2);
    EXPECT_EQ(v[2], -2);
    EXPECT_EQ(v[3], 256);
    EXPECT_EQ(s->mm[1], 2.0f);
    EXPECT_EQ(s->mm[3], 4.0f);
    EXPECT_EQ(s->mm[4], 1.0f);
    const CZrkData* c = GlobalDataSpace().FindData("c");
    ASSERT_TRUE(c);
    EXPECT_EQ(c->type, TYPE_CR4);
    EXPECT_EQ(static_cast<const float*>(c->Data())[0], 1.0f);
    EXPECT_EQ(static_cast<const float*>(c->Data())[1], -2.0f);
    // The old display key made a 2d window with zoom, pan, part and window in its look.
    ASSERT_EQ(GlobalWindowSpace().Count(), 1);
    auto* e = dynamic_cast<CDisplayEntry*>(GlobalWindowSpace().Get(0));
    EXPECT_EQ(e->data[0], c);
    EXPECT_EQ(e->look.palplane.zoom[1], 300.0f);
    EXPECT_EQ(e->look.palplane.pan[0], 5);
    EXPECT_EQ(e->look.palplane.iqmp, 1);
    EXPECT_EQ(e->look.palplane.window, 9.0f);
}

TEST_F(ZrkFile, LoadAllStopsAtTheFirstFailure) {
    ws::RandomArray("one", TYPE_N2, {5}, 3);
    ASSERT_EQ(CZrkFile(Path("good.zrk")).Write(), 1);
    ws::ClearSpaces();
    Spit(Path("bad.zrk"), Head("junk= 1\n"));
    FileEntry entries[3];
    entries[0].path = Path("good.zrk");
    entries[1].path = Path("bad.zrk");
    entries[2].path = Path("good.zrk");
    std::string dialog;
    EXPECT_EQ(LoadAll(&dialog, entries, 3), 1);
    EXPECT_EQ(dialog, "read error");
    EXPECT_EQ(entries[0].status, "read complete");
    EXPECT_EQ(entries[1].status, "read error");
    EXPECT_EQ(entries[2].status, "");
    EXPECT_TRUE(GlobalDataSpace().FindData("one"));
    EXPECT_EQ(LoadAll(&dialog, entries, 1), 0);
    EXPECT_EQ(dialog, "read complete");
}

TEST_F(ZrkFile, DamagedInputEndsInItsText) {
    const std::string block =
        "view_data= a\ntypen= 2 r4\nres6= 2 1 1 1 1 1\nmm6= 1 1 1 1 1 1\n"
        "data=\n01234567";
    const std::string look_start = "DPY2D= a\nname= 1 w\ncaption= 0 \nlook= \n";
    const struct {
        const char* what;
        std::string bytes;
        const char* status;
    } cases[] = {
        {"unknown key", Head(block + "colour= 5\n"), "read error"},
        {"no end of head", "zarnik win99\nnbytes= 0\nhistory= 0\n", "read error"},
        {"history of two billion", "zarnik win99\nhistory= 2000000000\nx\nend \n", "read error"},
        {"negative size", Head("view_data= a\ntypen= 2 r4\nres6= 2 -1 1 1 1 1\ndata=\n0123"),
         "read error"},
        {"negative and zero sizes",
         Head("view_data= a\ntypen= 2 r4\nres6= 0 -1 1 1 1 1\ndata=\nview_data= b\n"),
         "read error"},
        {"overflowing size",
         Head("view_data= a\ntypen= 2 r4\nres6= 2147483647 2147483647 2147483647 2147483647 "
              "2147483647 2147483647\ndata=\n0123"),
         "read error"},
        // 4 TB beyond the end: answered before anything is allocated.
        {"bytes beyond the end",
         Head("view_data= a\ntypen= 2 r4\nres6= 1000000 1000000 1 1 1 1\ndata=\n0123"),
         "read error"},
        {"short data", Head("view_data= a\ntypen= 2 r4\nres6= 4 1 1 1 1 1\ndata=\n0123"),
         "read error"},
        {"unknown type", Head("view_data= a\ntypen= 3 xyz\nres6= 1 1 1 1 1 1\ndata=\n0123"),
         "alloc error"},
        {"type length beyond the end", Head("typen= 2000000000 r4\n"), "read error"},
        {"caption beyond the end", Head(block + "DPY1D= a\ncaption= 99999 abc\n"), "read error"},
        {"long key", Head(std::string(10000, 'k') + "\n"), "read error"},
        {"missing display end", Head(block + "DPY1D= a\ncaption= 0 \npage= 1\n"), "read error"},
        {"lines of two billion", Head(block + look_start + "lines= 2000000000\nend2d \n"),
         "read complete"},
        {"negative lines", Head(block + look_start + "lines= -4\nendlook \nend2d \n"),
         "read complete"},
        {"end inside records",
         Head(block + look_start + "screen=\nend\narrows= 1\nend\nendlook \nend2d \n"),
         "read complete"},
        {"zero size", Head("view_data= z\ntypen= 2 r4\nres6= 0 1 1 1 1 1\ndata=\n"),
         "read complete"},
        {"long name", Head("view_data= " + std::string(10000, 'n') + "\n" + block.substr(13)),
         "read complete"},
    };
    for (const auto& c : cases) {
        ws::ClearSpaces();
        std::string status;
        const int result = ReadText(c.bytes, &status);
        EXPECT_EQ(status, c.status) << c.what;
        EXPECT_EQ(result, std::string(c.status) == "read complete" ? 0 : 1) << c.what;
    }
    // A name too long is cut to the field.
    ASSERT_EQ(GlobalDataSpace().Count(), 1);
    EXPECT_EQ(std::strlen(GlobalDataSpace().GetData(0)->name), 127u);
}

TEST_F(ZrkFile, EveryTruncationFailsCleanly) {
    ws::RandomArray("a", TYPE_CR4, {3, 2}, 5);
    ws::RandomArray("b b", TYPE_I8, {2, 1, 2}, 6);
    CDisplayEntry* w =
        ws::AddWindow(KIND_1D, GlobalDataSpace().FindData("a"), nullptr, nullptr, "p00");
    w->look.AddLine();
    w->look.AddText();
    ws::AddWindow(KIND_2D, GlobalDataSpace().FindData("b b"), nullptr, nullptr, "i00");
    Host().History("x\r\n");
    ASSERT_EQ(CZrkFile(Path("full.zrk")).Write(), 1);
    const std::string full = Slurp(Path("full.zrk"));
    const size_t data_a = full.find("data=\n") + 6;
    for (size_t n = 0; n < full.size(); ++n) {
        ws::ClearSpaces();
        std::string status;
        const int result = ReadText(full.substr(0, n), &status);
        ASSERT_TRUE(status == "read error" || status == "invalid header" ||
                    status == "read complete")
            << n << ": " << status;
        // Cut at a token's end, the file is whole up to there and reads.
        if (result == 0) continue;
        // Arrays read before the cut stay, whole.
        const CZrkData* a = GlobalDataSpace().FindData("a");
        if (n >= data_a + 48) {
            ASSERT_TRUE(a) << n;
            EXPECT_EQ(a->Bytes(), 48u);
        }
    }
}

TEST_F(ZrkFile, AnIndependentReaderFindsEveryArray) {
    peer::Peer p;
    int n = 0;
    for (int t = 0; t < TYPE_COUNT; ++t) {
        const std::string name = std::string("a ") + std::to_string(t);
        const CZrkData* a = ws::RandomArray(name.c_str(), t, {2, 3, 1, 2, 1, 2}, 7 + t);
        p.Put("a_" + std::to_string(t), a);
        ++n;
    }
    // A float array with NaN and infinities travels bit for bit.
    CZrkData* f = ws::RandomArray("special", TYPE_R8, {4}, 9);
    const double special[4] = {NAN, INFINITY, -INFINITY, -0.0};
    std::memcpy(f->Data(), special, sizeof special);
    p.Put("special", f);
    ws::AddWindow(KIND_2D, f, nullptr, nullptr, "i00");
    ASSERT_EQ(CZrkFile((p.Dir() / "ws.zrk").string()).Write(), 1);
    ASSERT_TRUE(p.Run("files/zrk_reader.py"));
    EXPECT_NE(p.Output().find("checked " + std::to_string(n + 1)), std::string::npos) << p.Output();
    EXPECT_NE(p.Output().find("a 13 complex i8 2 3 1 2 1 2\n"), std::string::npos);
}

TEST_F(ZrkFile, TheCrashFileIsOfferedAtStart) {
    const std::string crash = Path("quelmor_crash.zrk");
    SetCrashPath(crash.c_str());
    ReadCrashFile();  // no file: nothing is asked
    EXPECT_TRUE(host_.questions.empty());
    ws::RandomArray("saved", TYPE_R4, {4}, 2);
    ASSERT_EQ(WriteCrashWorkspace(crash.c_str()), 0);
    ws::ClearSpaces();

    host_.answer = false;
    ReadCrashFile();
    EXPECT_EQ(host_.questions, (std::vector<std::string>{"read crash file\n16 bytes in 1 data sets",
                                                         "delete crash file"}));
    EXPECT_EQ(GlobalDataSpace().Count(), 0);
    EXPECT_TRUE(std::filesystem::exists(crash));

    host_.answer = true;
    ReadCrashFile();
    EXPECT_TRUE(GlobalDataSpace().FindData("saved"));
    EXPECT_FALSE(std::filesystem::exists(crash));
    SetCrashPath("");
}

namespace {

// A display that resets its window and level when made, as the image windows do.
CDisplayEntry* ResettingEntry(const CDisplayRequest& r) {
    CDisplayEntry* e = ws::ListEntry(r);
    e->look.palplane.window = 1.0f;
    e->look.palplane.level = 0.5f;
    e->look.palplane.inv = 0;
    return e;
}

}  // namespace

TEST_F(ZrkFile, WindowAndLevelSurviveTheMakingOfA2dWindow) {
    CZrkData* a = ws::RandomArray("a", TYPE_R4, {4, 4}, 3);
    CDisplayEntry* w = ws::AddWindow(KIND_2D, a, nullptr, nullptr, "i00");
    w->look.palplane.window = 33.0f, w->look.palplane.level = -4.0f, w->look.palplane.inv = 1;
    ASSERT_EQ(CZrkFile(Path("wl.zrk")).Write(), 1);
    ws::ClearSpaces();
    ws::InstallFactory(&ResettingEntry);
    ASSERT_EQ(CZrkFile(Path("wl.zrk")).Read(), 0);
    auto* back = dynamic_cast<CDisplayEntry*>(GlobalWindowSpace().Get(0));
    ASSERT_TRUE(back);
    EXPECT_EQ(back->look.palplane.window, 33.0f);
    EXPECT_EQ(back->look.palplane.level, -4.0f);
    EXPECT_EQ(back->look.palplane.inv, 1);
}
