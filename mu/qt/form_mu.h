// CFormMu: the wave inversion form over CMuForm. The option selector (`mu_options`) and its
// menu ("save", "remove", "update"), the status line (`mu_status`), base name (`mu_base`),
// count (`mu_count`), "append data" (`mu_append`), the sheet (`mu_sheet`) and "continue>>"
// (`mu_continue`). CMuSheet holds one page view per page the model has created; a change on
// an earlier page lets the model drop the later ones and the sheet follows.
//
//   CFormMu* form = new CFormMu(space, modules.mu_options);
//   mdi->addSubWindow(form)->show();
#pragma once

#include <QTabWidget>
#include <QWidget>
#include <memory>

#include "mu/mu_form.h"

class CDataSpace;
class CMuViewDriver;
class CPageMuView;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;

class CMuSheet : public QTabWidget {
    Q_OBJECT
  public:
    explicit CMuSheet(QWidget* parent = nullptr);
    CPageMuView* View(int i) const;
};

class CFormMu : public QWidget {
    Q_OBJECT
  public:
    CFormMu(CDataSpace& space, CMuOptions& options, QWidget* parent = nullptr);
    ~CFormMu() override;

    CMuForm& Model() { return model_; }
    CMuSheet* Sheet() const { return sheet_; }

    void OnContinue();
    void OnApply();
    // The option menu's entries.
    void OnSave();
    void OnRemove();
    void OnUpdate();
    // Brings controls, pages and status up to the model.
    void Sync();

  signals:
    // Arrays were made or changed: the desktop and displays want a refresh.
    void dataChanged();
    void helpRequested(const QString& page);

  private:
    void Store();
    CPageMuView* MakeView(int page);
    void ShowStatus();

    CDataSpace& space_;
    CMuForm model_;
    CMuViewDriver* driver_;  // the model's, which opens the run's displays
    QComboBox* options_;
    QLabel* status_;
    QLineEdit* base_;
    QLineEdit* count_;
    QCheckBox* append_;
    CMuSheet* sheet_;
    QPushButton* continue_;
    bool syncing_ = false;
};
