// The save model: the "%d" rules and their texts, the series of files one OK at a time
// with the list moving up, the overwrite question, and the options of both dialogs through
// the preferences file.
#include <cstdio>

#include "core/key_reader.h"
#include "shell/option_table.h"
#include "shell/shell_modules.h"
#include "tests/files/open_save_fixture.h"

namespace files_test {
namespace {

class SaveModel : public OpenSaveTest {};

TEST_F(SaveModel, SeveralArraysNeedOneSpecifierAndGoOneAtATime) {
    for (const char* name : {"a", "b", "c"}) Ramp(name, TYPE_R4, 2, 2);
    save_.dtype = TYPE_R4;
    save_.ftype = 0;
    CSaveModel save(save_, space_, windows_);
    save.Fill();
    EXPECT_EQ(save.items.size(), 3u);
    for (const char* name : {"a", "b", "c"}) save.Tick(name, true);
    save.DefaultFileName();
    EXPECT_EQ(save.file_name, "d%02d");
    EXPECT_EQ(save.ListText(), "a ...");

    save.file_name = Path("plain.raw");
    EXPECT_EQ(save.Save(), 0);
    EXPECT_EQ(save.status,
              "file name must have a %d format specifier\ne.g. file%02d.txt will give "
              "'file00.txt', 'file01.txt', 'file02.txt',...");
    EXPECT_EQ(host_.messages.back(), save.status);

    save.file_name = Path("file%02d.raw");
    EXPECT_EQ(save.Save(), 0);
    EXPECT_EQ(save.status, "file saved");
    EXPECT_EQ(save.ListText(), "b ...");
    EXPECT_EQ(save.Save(), 0);
    // The last of the series still takes its number.
    EXPECT_EQ(save.ListText(), "c");
    EXPECT_EQ(save.Save(), 1);
    for (const char* f : {"file00.raw", "file01.raw", "file02.raw"})
        EXPECT_EQ(std::filesystem::file_size(Path(f)), 16u) << f;
    EXPECT_EQ(save.ListText(), "");

    // The desktop's selection comes ticked.
    space_.FindData("b")->select = 1;
    CSaveModel one(save_, space_, windows_);
    one.tick_mask = 1;
    one.Fill();
    EXPECT_EQ(one.ListText(), "b");
    one.file_name = Path("one%d.raw");
    EXPECT_EQ(one.Save(), 0);
    EXPECT_EQ(one.status, "remove %d format specifier from file name");
}

TEST_F(SaveModel, OverwriteIsAskedAndStayKeepsTheDialog) {
    Ramp("a", TYPE_R4, 2, 2);
    Spit(Path("old.raw"), "old");
    host_.answer = false;
    EXPECT_EQ(Save("a", Path("old.raw"), 0), "file not overwritten");
    EXPECT_EQ(host_.questions.back(), "file exists: OVERWRITE?");
    EXPECT_EQ(Slurp(Path("old.raw")), "old");
    host_.answer = true;
    EXPECT_EQ(Save("a", Path("old.raw"), 0), "file saved");
    EXPECT_EQ(std::filesystem::file_size(Path("old.raw")), 16u);
    // No temporary stays behind.
    int files = 0;
    for (const auto& e : std::filesystem::directory_iterator(dir_)) files += e.is_regular_file();
    EXPECT_EQ(files, 1);

    save_.stay = 1;
    save_.ftype = 0;
    CSaveModel save(save_, space_, windows_);
    save.Fill();
    save.Tick("a", true);
    save.file_name = Path("new.raw");
    EXPECT_EQ(save.Save(), 0);
    EXPECT_EQ(save.status, "file saved");

    save_.ftype = 3;
    CSaveModel movie(save_, space_, windows_);
    movie.Fill();
    EXPECT_TRUE(movie.items.empty());
    movie.file_name = Path("m");
    Spit(Path("m.avi"), "old movie");
    host_.answer = false;
    movie.Save();
    EXPECT_EQ(movie.status, "file not overwritten");
    host_.answer = true;
    movie.Save();
    // past the question the movie writer looks for the display, which there is none of
    EXPECT_EQ(movie.status, "can not find image");
}

TEST_F(SaveModel, WorkspaceRowSavesEverything) {
    Ramp("a", TYPE_R4, 2, 2);
    Ramp("b", TYPE_I2, 3, 1);
    save_.ftype = 5;
    CSaveModel save(save_, space_, windows_);
    save.file_name = Path("all.zrk");
    // The workspace writer saves the program's own space.
    CZrkData* g = GlobalDataSpace().NewData(TYPE_R4, 2, 1, 1, 1, 1, 1, "g");
    EXPECT_EQ(save.Save(), 1);
    EXPECT_EQ(save.status, "file saved");
    GlobalDataSpace().DelData(g);
    // and the open dialog reads it into its own
    EXPECT_EQ(Open({Path("all.zrk")}, 6), "read complete");
    EXPECT_NE(space_.FindData("g"), nullptr);
}

TEST(FileOptions, RoundTripThroughThePreferencesFile) {
    CShellModules modules;
    COptionTable table;
    CDataSpace space;
    modules.Register(table, space);
    COpenOptions& o = modules.open;
    o.res4d[0] = "256";
    o.res4d[1] = "";  // an empty field must not swallow the next key
    o.skip4d[2] = "12";
    o.res_uv[1] = "3";
    o.offset = "1024";
    o.baselines[0] = 0;
    o.baselines[2] = 1;
    o.swap = 1;
    o.datatype = TYPE_CR8;
    o.filetype = 2;
    o.perline = 1;
    o.data_format = "scan %03d";
    o.name_is_file = 3;
    o.display[0] = 0;
    o.display[2] = 1;
    o.report = 1;
    CSaveOptions& s = modules.save;
    s.txtformat = "%.3e";
    s.separator = ",\\s";
    s.eol = "\\r\\n";
    s.ftype = 4;
    s.iqmp = 5;
    s.dtype = TYPE_R8;
    s.mat_version = 4;
    s.nuid = 0xbeef;
    s.rasinc = 1.5f;
    s.fps = 25;
    s.ppt = 3;
    const std::string path = ::testing::TempDir() + "files_options.txt";
    ASSERT_EQ(table.WriteOptions(path), 0);
    std::string text;
    {
        std::ifstream in(path);
        text.assign(std::istreambuf_iterator<char>(in), {});
    }
    EXPECT_NE(text.find("\n//open and save options\nopen_res4d= 256 - 1 1\n"), std::string::npos);
    EXPECT_NE(text.find("\n//save options\nsave_txtformat= %.3e\n"), std::string::npos);

    CShellModules back;
    COptionTable back_table;
    back.Register(back_table, space);
    back_table.ReadOptions(path);
    const COpenOptions& b = back.open;
    EXPECT_EQ(b.res4d[0], "256");
    EXPECT_EQ(b.res4d[1], "");
    EXPECT_EQ(b.skip4d[2], "12");
    EXPECT_EQ(b.res_uv[1], "3");
    EXPECT_EQ(b.offset, "1024");
    EXPECT_EQ(b.baselines[2], 1);
    EXPECT_EQ(b.swap, 1);
    EXPECT_EQ(b.datatype, TYPE_CR8);
    EXPECT_EQ(b.filetype, 2);
    EXPECT_EQ(b.perline, 1);
    EXPECT_EQ(b.data_format, "scan %03d");
    EXPECT_EQ(b.name_is_file, 3);
    EXPECT_EQ(b.display[2], 1);
    EXPECT_EQ(b.report, 1);
    const CSaveOptions& c = back.save;
    EXPECT_EQ(c.txtformat, "%.3e");
    EXPECT_EQ(c.separator, ",\\s");
    EXPECT_EQ(c.eol, "\\r\\n");
    EXPECT_EQ(c.ftype, 4);
    EXPECT_EQ(c.iqmp, 5);
    EXPECT_EQ(c.dtype, TYPE_R8);
    EXPECT_EQ(c.mat_version, 4);
    EXPECT_EQ(c.nuid, 0xbeefu);
    EXPECT_EQ(c.rasinc, 1.5f);
    EXPECT_EQ(c.fps, 25);
    EXPECT_EQ(c.ppt, 3);
    std::remove(path.c_str());

    const COpenOptions defaults;
    EXPECT_EQ(defaults.baselines[0], 1);
    EXPECT_EQ(defaults.datatype, TYPE_R4);
    EXPECT_EQ(defaults.filetype, 3);
    EXPECT_EQ(defaults.name_is_file, 1);
    EXPECT_EQ(CSaveOptions().iqmp, 2);
    EXPECT_EQ(CSaveOptions().dtype, 6);
    EXPECT_EQ(CSaveOptions().mat_version, 7);
}

}  // namespace
}  // namespace files_test
