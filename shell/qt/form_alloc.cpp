#include "shell/qt/form_alloc.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include "core/data_space.h"
#include "core/element_type.h"
#include "core/host.h"

CFormAlloc::CFormAlloc(CDataSpace& space, QWidget* parent)
    : QDialog(parent), space_(space), status_(new QLabel(this)) {
    setObjectName("alloc_form");
    setWindowTitle("allocate data");
    auto* grid = new QGridLayout(this);
    const char* heads[] = {"name", "x", "y", "z", "t", "type"};
    for (int c = 0; c < 6; ++c) grid->addWidget(new QLabel(heads[c], this), 0, c);
    for (int r = 0; r < CAlloc::kRows; ++r) {
        Row& row = rows_[r];
        row.name = new QLineEdit(this);
        row.name->setObjectName(QString("alloc_name%1").arg(r));
        grid->addWidget(row.name, r + 1, 0);
        for (int d = 0; d < 4; ++d) {
            row.size[d] = new QSpinBox(this);
            row.size[d]->setObjectName(QString("alloc_n%1%2").arg("xyzt"[d]).arg(r));
            row.size[d]->setRange(1, 1 << 20);
            row.size[d]->setValue(d < 2 ? 256 : 1);
            grid->addWidget(row.size[d], r + 1, d + 1);
        }
        row.type = new QComboBox(this);
        row.type->setObjectName(QString("alloc_type%1").arg(r));
        for (int t = 0; t < TYPE_COUNT; ++t) row.type->addItem(TypeName(t), t);
        row.type->setCurrentIndex(TYPE_R4);
        grid->addWidget(row.type, r + 1, 5);
    }
    status_->setObjectName("alloc_status");
    grid->addWidget(status_, CAlloc::kRows + 1, 0, 1, 6);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    QPushButton* run = buttons->addButton("allocate", QDialogButtonBox::ApplyRole);
    run->setObjectName("alloc_run");
    grid->addWidget(buttons, CAlloc::kRows + 2, 0, 1, 6);
    connect(run, &QPushButton::clicked, this, &CFormAlloc::OnAllocate);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void CFormAlloc::OnAllocate() {
    Host().Trace("CFormAlloc::OnAllocate");
    CAlloc alloc;
    for (int r = 0; r < CAlloc::kRows; ++r) {
        CAllocRow& row = alloc.rows[r];
        row.name = rows_[r].name->text().trimmed().toStdString();
        row.nx = rows_[r].size[0]->value();
        row.ny = rows_[r].size[1]->value();
        row.nz = rows_[r].size[2]->value();
        row.nt = rows_[r].size[3]->value();
        row.type = rows_[r].type->currentData().toInt();
    }
    const QString status = QString::fromStdString(alloc.Run(space_));
    status_->setText(status);
    emit allocated(status);
}
