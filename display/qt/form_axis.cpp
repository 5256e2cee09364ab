#include "display/qt/form_axis.h"

#include <QCheckBox>
#include <QDoubleValidator>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>

#include "display/look.h"
#include "display/qt/ok_cancel.h"

namespace {

// A field of a float in the C locale, so that the preferences and the field agree on the
// decimal point.
QLineEdit* Number(const QString& name, float value, double bottom, QObject* owner) {
    auto* e = new QLineEdit(QString::number(value, 'g', 7));
    e->setObjectName(name);
    auto* v = new QDoubleValidator(bottom, 1e30, 7, owner);
    v->setLocale(QLocale::c());
    v->setNotation(QDoubleValidator::StandardNotation);
    e->setValidator(v);
    return e;
}

QSpinBox* Spin(const QString& name, int lo, int hi, int value) {
    auto* s = new QSpinBox;
    s->setObjectName(name);
    s->setRange(lo, hi);
    s->setValue(value);
    return s;
}

// A field left empty or half typed keeps the value there was.
void Take(const QLineEdit* e, float* value) {
    bool ok = false;
    const double v = QLocale::c().toDouble(e->text().trimmed(), &ok);
    if (ok) *value = static_cast<float>(v);
}

}  // namespace

CFormAxis::CFormAxis(CAxisOptions& options, QWidget* parent) : QDialog(parent), options_(options) {
    const QString kind = options.kind == LOOK_XY ? "xy" : "1d";
    setObjectName("form_axis_" + kind);
    setWindowTitle(kind + " axis etc");
    auto* grid = new QGridLayout;
    static const char* kRows[] = {"tick spacing (0 automatic)",
                                  "minor ticks (0 none)",
                                  "tick length",
                                  "minor tick length",
                                  "labels left out between",
                                  "grid",
                                  "line thickness",
                                  "scale of values shown",
                                  "offset of values shown",
                                  "label format"};
    for (int r = 0; r < 10; ++r) grid->addWidget(new QLabel(kRows[r]), r + 1, 0);
    grid->addWidget(new QLabel("x axes"), 0, 1);
    grid->addWidget(new QLabel("y axes"), 0, 2);
    for (int d = 0; d < 2; ++d) {
        const CAxisStyle& s = options.axis[d];
        // "axis1d_x_tick", "axisxy_y_grid", ...
        const QString p = QString("axis%1_%2_").arg(kind, d ? "y" : "x");
        Column& c = column_[d];
        c.tick = Number(p + "tick", s.tick, 0, this);
        c.minortick = Number(p + "minortick", s.minortick, 0, this);
        c.ticklen = Spin(p + "ticklen", 0, 100, s.ticklen);
        c.mticklen = Spin(p + "mticklen", 0, 100, s.mticklen);
        c.skipinter = Spin(p + "skipinter", 0, 100, s.skipinter);
        c.grid = new QCheckBox;
        c.grid->setObjectName(p + "grid");
        c.grid->setChecked(s.grid != 0);
        c.thick = Spin(p + "thick", 1, 20, s.thick);
        c.tickscale = Number(p + "tickscale", s.tickscale, -1e30, this);
        c.tickoff = Number(p + "tickoff", s.tickoff, -1e30, this);
        c.tickformat = new QLineEdit(QString::fromStdString(s.tickformat));
        c.tickformat->setObjectName(p + "tickformat");
        c.tickformat->setMaxLength(127);
        QWidget* fields[] = {c.tick, c.minortick, c.ticklen,   c.mticklen, c.skipinter,
                             c.grid, c.thick,     c.tickscale, c.tickoff,  c.tickformat};
        for (int r = 0; r < 10; ++r) grid->addWidget(fields[r], r + 1, d + 1);
    }
    OkCancelBelow(this, grid, QString("axis%1_ok").arg(kind), QString("axis%1_cancel").arg(kind),
                  &CFormAxis::OnOk);
}

void CFormAxis::OnOk() {
    for (int d = 0; d < 2; ++d) {
        CAxisStyle& s = options_.axis[d];
        const Column& c = column_[d];
        Take(c.tick, &s.tick);
        Take(c.minortick, &s.minortick);
        Take(c.tickscale, &s.tickscale);
        Take(c.tickoff, &s.tickoff);
        s.ticklen = c.ticklen->value();
        s.mticklen = c.mticklen->value();
        s.skipinter = c.skipinter->value();
        s.grid = c.grid->isChecked();
        s.thick = c.thick->value();
        s.tickformat = c.tickformat->text().trimmed().toStdString();
    }
    options_.Normalize();
    options_.UpdateLookDefaults();
    accept();
}
