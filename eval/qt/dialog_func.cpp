#include "eval/qt/dialog_func.h"

#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/host.h"

CDialogFunc::CDialogFunc(QWidget* parent)
    : QDialog(parent),
      list_(new QTreeWidget(this)),
      help_(new QPlainTextEdit(this)),
      variants_(new QListWidget(this)) {
    setObjectName("dialog_func");
    setWindowTitle("functions");
    list_->setObjectName("func_list");
    help_->setObjectName("func_help");
    variants_->setObjectName("func_variants");
    list_->setRootIsDecorated(false);
    list_->setColumnCount(2);
    list_->setHeaderLabels({"function", "description"});
    help_->setReadOnly(true);
    help_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    help_->setTabStopDistance(12 * help_->fontMetrics().horizontalAdvance(' '));
    const auto& rows = browser_.Rows();
    for (size_t k = 0; k < rows.size(); ++k) {
        auto* item = new QTreeWidgetItem(list_);
        item->setText(0, QString::fromStdString(rows[k].name));
        item->setText(1, QString::fromStdString(rows[k].title));
        item->setData(0, Qt::UserRole, static_cast<int>(k));
    }
    list_->resizeColumnToContents(0);

    auto* buttons = new QDialogButtonBox(this);
    QPushButton* insert = buttons->addButton("insert", QDialogButtonBox::AcceptRole);
    insert->setObjectName("func_insert");
    QPushButton* close = buttons->addButton("close", QDialogButtonBox::RejectRole);
    close->setObjectName("func_close");

    auto* side = new QVBoxLayout;
    side->addWidget(help_, 3);
    side->addWidget(variants_, 1);
    auto* panes = new QHBoxLayout;
    panes->addWidget(list_, 1);
    panes->addLayout(side, 1);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(panes, 1);
    layout->addWidget(buttons);
    resize(980, 560);

    connect(list_, &QTreeWidget::currentItemChanged, this, &CDialogFunc::OnRow);
    connect(list_, &QTreeWidget::itemDoubleClicked, this, [this] {
        variants_->setCurrentRow(-1);
        OnInsert();
    });
    connect(variants_, &QListWidget::itemDoubleClicked, this, &CDialogFunc::OnInsert);
    connect(insert, &QPushButton::clicked, this, &CDialogFunc::OnInsert);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    if (list_->topLevelItemCount() > 0) list_->setCurrentItem(list_->topLevelItem(0));
}

bool CDialogFunc::Select(const QString& name) {
    const QList<QTreeWidgetItem*> found = list_->findItems(name, Qt::MatchExactly, 0);
    if (found.isEmpty()) return false;
    list_->setCurrentItem(found.front());
    list_->scrollToItem(found.front());
    return true;
}

void CDialogFunc::OnRow() {
    Host().Trace("CDialogFunc::OnRow");
    QTreeWidgetItem* item = list_->currentItem();
    const int k = item ? item->data(0, Qt::UserRole).toInt() : -1;
    help_->setPlainText(QString::fromStdString(browser_.HelpText(k)));
    variants_->clear();
    for (const CBrowserVariant& v : browser_.Variants(k)) {
        auto* entry = new QListWidgetItem(QString::fromStdString(v.label), variants_);
        entry->setData(Qt::UserRole, QString::fromStdString(v.insert));
    }
    variants_->setVisible(variants_->count() > 0);
}

void CDialogFunc::OnInsert() {
    QTreeWidgetItem* item = list_->currentItem();
    if (!item) return;
    QListWidgetItem* variant = variants_->currentItem();
    chosen_ =
        variant && variant->isSelected() ? variant->data(Qt::UserRole).toString() : item->text(0);
    accept();
}
