// The body of an options dialog above a row of "OK" (the default button) and "cancel":
// OK runs the dialog's `ok`, cancel rejects.
//
//   OkCancelBelow(this, grid, "axis1_ok", "axis1_cancel", &CFormAxis::OnOk);
#pragma once

#include <QDialog>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

template <class Dialog>
void OkCancelBelow(Dialog* dialog, QLayout* body, const QString& ok_name,
                   const QString& cancel_name, void (Dialog::*ok)()) {
    auto* accept = new QPushButton("OK");
    accept->setObjectName(ok_name);
    accept->setDefault(true);
    auto* cancel = new QPushButton("cancel");
    cancel->setObjectName(cancel_name);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(accept);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(dialog);
    layout->addLayout(body);
    layout->addLayout(buttons);
    QObject::connect(accept, &QPushButton::clicked, dialog, ok);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
}
