// The inversion sheet on the offscreen platform, driven through its objectNames: opened from
// the functions menu, filled with arrays typed into the equation bar, walked page by page and
// run; the option selector and its menu; the page views' validators and locks; the help buttons
// and "load from file".
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QPushButton>
#include <QTest>
#include <QUrl>
#include <algorithm>
#include <complex>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <vector>

#include "core/window_space.h"
#include "display/display_entry.h"
#include "display/qt/mdi_doc.h"
#include "mu/qt/form_mu.h"
#include "mu/qt/page_mu_view.h"
#include "shell/shell_modules.h"
#include "tests/display/gui_fixture.h"
#include "tests/peer.h"

// Stands for the desktop's browser: records the pages the help buttons start.
class MuHelpBrowser : public QObject {
    Q_OBJECT
  public slots:
    void open(const QUrl& url) { files << url.toLocalFile(); }

  public:
    QStringList files;
};

namespace {

namespace fs = std::filesystem;

class FormMuTest : public DisplayGuiTest {
  protected:
    CFormMu* OpenSheet() {
        QAction* action = frame_->findChild<QAction*>("action_wave_inversion");
        EXPECT_NE(action, nullptr);
        if (!action) return nullptr;
        action->trigger();
        return frame_->findChild<CFormMu*>("form_mu");
    }
    // A magnitude and a time series of eight phase offsets, typed in the bar.
    void TypeInputs() {
        Type("magn = malloc(\"r4\", 16, 12, 1, 8) + 100");
        Type("ph = malloc(\"r4\", 16, 12, 1, 8) + ramp(\"x\", 0, 60, 16)");
        ASSERT_NE(space_.FindData("magn"), nullptr);
        ASSERT_NE(space_.FindData("ph"), nullptr);
    }
    // The sheet over the typed inputs, their names on the data page; null on a failure.
    CFormMu* OpenFilledSheet() {
        TypeInputs();
        if (HasFatalFailure()) return nullptr;
        CFormMu* form = OpenSheet();
        if (!form) return nullptr;
        Name(form, "magnitude", "magn");
        Name(form, "phase_name0", "ph");
        return form;
    }
    template <class T>
    static T* Child(QWidget* root, const char* name) {
        T* child = root->findChild<T*>(name);
        EXPECT_NE(child, nullptr) << name;
        return child;
    }
    static void Continue(CFormMu* form) {
        QTest::mouseClick(Child<QPushButton>(form, "mu_continue"), Qt::LeftButton);
    }
    static QString Status(CFormMu* form) { return Child<QLabel>(form, "mu_status")->text(); }
    static int Page(CFormMu* form) { return Child<CMuSheet>(form, "mu_sheet")->currentIndex(); }
    static void Name(CFormMu* form, const char* control, const char* array) {
        auto* combo = Child<QComboBox>(form, control);
        combo->setCurrentText(array);
    }
};

TEST_F(FormMuTest, WalksToTheLastPageAndRuns) {
    TypeInputs();
    CFormMu* form = OpenSheet();
    ASSERT_NE(form, nullptr);
    EXPECT_EQ(qobject_cast<QMdiSubWindow*>(form->parentWidget())->objectName(), "mu_window");
    auto* sheet = Child<CMuSheet>(form, "mu_sheet");
    ASSERT_EQ(sheet->count(), 1);
    EXPECT_NE(sheet->findChild<CPageMuDataView*>("mu_page_data"), nullptr);
    // The array fields list the desktop's names.
    auto* magnitude = Child<QComboBox>(form, "magnitude");
    EXPECT_GE(magnitude->findText("magn"), 0);
    EXPECT_GE(magnitude->findText("ph"), 0);

    // No magnitude: the data page stays with the check's text.
    Name(form, "phase_name0", "ph");
    Continue(form);
    EXPECT_EQ(Status(form), "invalid magnitude data");
    EXPECT_EQ(Page(form), 0);
    EXPECT_EQ(sheet->count(), 1);

    Name(form, "magnitude", "magn");
    Continue(form);
    ASSERT_EQ(sheet->count(), 2) << Status(form).toStdString();
    EXPECT_EQ(Page(form), 1);
    EXPECT_TRUE(Status(form).startsWith("default: 2d data: 8 offsets"))
        << Status(form).toStdString();
    const char* pages[] = {"mu_page_data",   "mu_page_params", "mu_page_mask", "mu_page_wrap",
                           "mu_page_filter", "mu_page_output", "mu_page_lfe"};
    // Defaults off on the params page, then the r1i1 output on the output page.
    Child<QCheckBox>(form, "param_default")->setChecked(false);
    auto* preset = Child<QComboBox>(form, "phase_range");
    preset->setCurrentIndex(0);
    for (int page = 2; page < 7; ++page) {
        if (page == 6) Child<QCheckBox>(form, "r1i1_out")->setChecked(true);
        Continue(form);
        ASSERT_EQ(sheet->count(), page + 1) << Status(form).toStdString();
        EXPECT_EQ(Page(form), page);
        EXPECT_EQ(sheet->widget(page)->objectName(), pages[page]);
    }
    const int windows = Windows();
    Continue(form);  // on the lfe page: the run
    // The outputs are arrays on the desktop and their look targets open 2-D displays.
    CZrkData* harmonic = space_.FindData("r1i101");
    ASSERT_NE(harmonic, nullptr) << Status(form).toStdString();
    EXPECT_GT(Windows(), windows);
    bool shown = false;
    for (QMdiSubWindow* sub : frame_->Mdi()->subWindowList())
        shown = shown || sub->windowTitle() == "r1i101";
    EXPECT_TRUE(shown);
    // Opened once the run is over, the display takes its window and level from the written
    // array.
    ASSERT_TRUE(harmonic->IsComplex());
    const auto* iq = static_cast<const std::complex<float>*>(harmonic->Data());
    int displays = 0;
    for (int i = 0; i < GlobalWindowSpace().Count(); ++i) {
        auto* entry = dynamic_cast<CDisplayEntry*>(GlobalWindowSpace().Get(i));
        if (!entry || entry->data[0] != harmonic) continue;
        ++displays;
        const CPlane& plane = entry->look.palplane;
        std::vector<float> channel;
        for (uint64_t k = 0; k < harmonic->Count(); ++k)
            channel.push_back(plane.iqmp == 0   ? iq[k].real()
                              : plane.iqmp == 1 ? iq[k].imag()
                              : plane.iqmp == 2 ? std::abs(iq[k])
                                                : std::arg(iq[k]));
        const auto [lo, hi] = std::minmax_element(channel.begin(), channel.end());
        ASSERT_LT(*lo, *hi);
        EXPECT_NEAR(plane.datamin, *lo, 1e-5 * (*hi - *lo));
        EXPECT_NEAR(plane.datamax, *hi, 1e-5 * (*hi - *lo));
        EXPECT_NEAR(plane.level, (*lo + *hi) / 2, 1e-5 * (*hi - *lo));
    }
    EXPECT_EQ(displays, 1);

    // A change on the data page drops the pages behind it.
    sheet->setCurrentIndex(0);
    Name(form, "magnitude", "ph");
    Continue(form);
    EXPECT_EQ(sheet->count(), 2);
}

TEST_F(FormMuTest, EscInterruptsTheRunWhichEndsNormally) {
    CFormMu* form = OpenFilledSheet();
    ASSERT_NE(form, nullptr);
    for (int page = 1; page < 7; ++page) {
        if (page == 6) Child<QCheckBox>(form, "r1i1_out")->setChecked(true);
        Continue(form);
    }
    ASSERT_EQ(Page(form), 6) << Status(form).toStdString();
    // The user's Esc waits in the queue; the run meets it before its first pass.
    QCoreApplication::postEvent(form, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, {}));
    Continue(form);
    EXPECT_EQ(space_.FindData("r1i101"), nullptr);
    EXPECT_EQ(Status(form), "");
    // The next run goes through.
    Continue(form);
    EXPECT_NE(space_.FindData("r1i101"), nullptr);
}

TEST_F(FormMuTest, AnArrayFreedOrRenamedWhileOpenMeetsTheCheck) {
    CFormMu* form = OpenFilledSheet();
    ASSERT_NE(form, nullptr);
    Continue(form);
    ASSERT_EQ(Page(form), 1);
    // The sheet keeps names: a freed phase is simply not found.
    space_.DelData("ph");
    form->Sheet()->setCurrentIndex(0);
    Continue(form);
    Continue(form);
    EXPECT_EQ(Status(form), "invalid x phase data");
    EXPECT_EQ(Page(form), 0);
    Type("ph2 = magn * 0");
    Name(form, "phase_name0", "ph2");
    Continue(form);
    EXPECT_EQ(Page(form), 1) << Status(form).toStdString();
}

TEST_F(FormMuTest, OptionSelectorAndItsMenu) {
    CMuOptions& options = app_->Modules().mu_options;
    options.Add(2);
    options.Get(1)->name = "liver";
    options.Get(2)->name = "brain";
    CFormMu* form = OpenSheet();
    ASSERT_NE(form, nullptr);
    auto* selector = Child<QComboBox>(form, "mu_options");
    ASSERT_EQ(selector->count(), 3);
    EXPECT_EQ(selector->itemText(1), "liver");
    selector->setCurrentIndex(2);
    emit selector->activated(2);
    EXPECT_EQ(Status(form), "options changed");
    Child<QAction>(form, "mu_remove")->trigger();
    EXPECT_EQ(Status(form), "options removed");
    EXPECT_EQ(selector->count(), 2);
    EXPECT_EQ(selector->currentIndex(), 1);
    // "default" is never removed.
    selector->setCurrentIndex(0);
    emit selector->activated(0);
    Child<QAction>(form, "mu_remove")->trigger();
    EXPECT_EQ(selector->count(), 2);
    EXPECT_EQ(selector->itemText(0), "default");
}

class MuPageViewsTest : public FormMuTest {};

TEST_F(MuPageViewsTest, ControlsMoveValuesAndRefuseLetters) {
    CFormMu* form = OpenFilledSheet();
    ASSERT_NE(form, nullptr);
    Continue(form);
    CPageMuParams* params = form->Model().Params();
    ASSERT_NE(params, nullptr);
    auto* freq = Child<QLineEdit>(form, "mech_freq");
    // The defaults tick locks the page.
    EXPECT_FALSE(freq->isEnabled());
    Child<QCheckBox>(form, "param_default")->setChecked(false);
    EXPECT_TRUE(freq->isEnabled());
    freq->clear();
    QTest::keyClicks(freq, "5x0");
    EXPECT_EQ(freq->text(), "50");
    // The presets set the range; only "other" opens its edits.
    auto* preset = Child<QComboBox>(form, "phase_range");
    ASSERT_EQ(preset->count(), 7);
    EXPECT_EQ(preset->itemText(5), "-31415 ... +31415");
    EXPECT_EQ(preset->itemText(6), "other");
    preset->setCurrentIndex(3);
    emit preset->activated(3);
    EXPECT_FLOAT_EQ(params->c.phase_range[1], 3.1415927f);
    EXPECT_FLOAT_EQ(params->c.mech_freq, 50.0f);
    EXPECT_FALSE(Child<QLineEdit>(form, "phase_max")->isEnabled());
    preset->setCurrentIndex(6);
    emit preset->activated(6);
    EXPECT_TRUE(Child<QLineEdit>(form, "phase_max")->isEnabled());
    // Out of range values meet the page check.
    Child<QLineEdit>(form, "harmonic_number")->setText("9");
    Continue(form);
    EXPECT_EQ(Status(form), "'harmonic number' must be between 1 and 3");
    EXPECT_EQ(Page(form), 0);
    // The lists the pages carry.
    Child<QLineEdit>(form, "harmonic_number")->setText("1");
    CMuSheet* sheet = form->Sheet();
    sheet->setCurrentIndex(1);
    for (int page = 2; page < 7; ++page) Continue(form);
    ASSERT_EQ(sheet->count(), 7) << Status(form).toStdString();
    auto items = [&](const char* name) {
        QStringList list;
        auto* combo = Child<QComboBox>(form, name);
        for (int i = 0; combo && i < combo->count(); ++i) list << combo->itemText(i);
        return list;
    };
    EXPECT_EQ(items("uwmethod"), (QStringList{"no unwrapping", "quality guided",
                                              "minimum discontinuity", "graph cut"}));
    EXPECT_EQ(items("filter_type"), (QStringList{"no filter", "gauss LP", "gauss BP", "gauss HP",
                                                 "butter LP", "butter BP", "butter HP"}));
    EXPECT_EQ(items("gradient_type"), (QStringList{"rect", "sin"}));
    EXPECT_EQ(items("mag_iqmp"), (QStringList{"i", "q", "m", "p"}));
    EXPECT_EQ(items("lfe_nd"), (QStringList{"1d", "2d", "3d"}));
    // Help buttons: no help folder here, so the status says so.
    auto* help = sheet->widget(6)->findChild<QPushButton*>("mu_help");
    ASSERT_NE(help, nullptr);
    QTest::mouseClick(help, Qt::LeftButton);
    EXPECT_EQ(frame_->StatusText(0), "could not open html help");
}

TEST_F(MuPageViewsTest, HelpButtonsStartTheirPages) {
    CFormMu* form = OpenFilledSheet();
    ASSERT_NE(form, nullptr);
    for (int page = 1; page < 7; ++page) Continue(form);
    CMuSheet* sheet = form->Sheet();
    ASSERT_EQ(sheet->count(), 7) << Status(form).toStdString();
    MuHelpBrowser browser;
    QDesktopServices::setUrlHandler("file", &browser, "open");
    // Gone with the browser, also when an assertion ends the test early.
    struct Unset {
        ~Unset() { QDesktopServices::unsetUrlHandler("file"); }
    } unset;
    const QString folder = QUELMOR_HELP_DIR;
    frame_->SetHelp(folder.toStdString(), "");
    const char* pages[] = {"wave_data.htm",   "wave_parameters.htm", "wave_parameters.htm",
                           "wave_unwrap.htm", "wave_filters.htm",    "wave_parameters.htm",
                           "wave_lfe.htm"};
    for (int i = 0; i < 7; ++i) {
        SCOPED_TRACE(pages[i]);
        sheet->setCurrentIndex(i);
        QTest::mouseClick(sheet->widget(i)->findChild<QPushButton*>("mu_help"), Qt::LeftButton);
        EXPECT_EQ(frame_->StatusText(0), "starting browser");
        ASSERT_EQ(browser.files.size(), i + 1);
        EXPECT_EQ(browser.files.back(), folder + "/" + pages[i]);
    }
    // A folder without the pages: nothing is started.
    frame_->SetHelp(fs::temp_directory_path().string(), "");
    QTest::mouseClick(sheet->widget(6)->findChild<QPushButton*>("mu_help"), Qt::LeftButton);
    EXPECT_EQ(frame_->StatusText(0), "could not open html help");
    EXPECT_EQ(browser.files.size(), 7);
}

// "load from file" through its dialog, on files the scanner tests' generator writes.
TEST_F(MuPageViewsTest, LoadFromFileFillsTheFieldOfView) {
    peer::Peer p;
    ASSERT_TRUE(p.Run("files/scanner/make_scanner.py"));
    CFormMu* form = OpenFilledSheet();
    ASSERT_NE(form, nullptr);
    Continue(form);
    ASSERT_EQ(Page(form), 1);
    auto load = [&](const std::string& file) {
        QTest::mouseClick(Child<QPushButton>(form, "mu_load_file"), Qt::LeftButton);
        auto* dialog = form->findChild<QFileDialog*>("mu_load_dialog");
        ASSERT_NE(dialog, nullptr);
        dialog->selectFile(QString::fromStdString((p.Dir() / file).string()));
        // QFileDialog makes accept() protected; through QDialog it is the same virtual call.
        static_cast<QDialog*>(dialog)->accept();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    // raw_24x: 6 x 3 x 2 samples; the generator's x step as its bit pattern.
    std::ifstream manifest(p.Dir() / "manifest.txt");
    std::string line, bits;
    while (std::getline(manifest, line))
        if (line.rfind("raw_24x ", 0) == 0) bits = line.substr(line.find(" sx=") + 4, 8);
    ASSERT_EQ(bits.size(), 8u);
    uint32_t word = uint32_t(std::stoul(bits, nullptr, 16));
    float step;
    std::memcpy(&step, &word, 4);
    load("raw_24x");
    EXPECT_EQ(Status(form), "2 baselines");
    auto* fov_x = Child<QLineEdit>(form, "fov_x");
    EXPECT_EQ(fov_x->text(), QString::number(float(6 * double(step) / 1000.0), 'g', 7));
    // A file the readers refuse leaves the edits and shows why.
    Child<QCheckBox>(form, "param_default")->setChecked(false);
    fov_x->setText("0.3");
    load("image_unknown");
    EXPECT_EQ(Status(form), "unknown header");
    EXPECT_EQ(fov_x->text(), "0.3");
}

}  // namespace

#include "form_mu_test.moc"
