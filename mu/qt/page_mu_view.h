// The widgets of the inversion sheet's pages. Each page view only moves values between its
// controls and its page model's record: Load() puts the record into the controls, Store()
// takes them back. Controls carry the names of the option keys they edit.
//
//   CPageMuParamsView view(*form.Params());
//   view.Load();  ...  view.Store();  form.Continue();
#pragma once

#include <QWidget>
#include <functional>
#include <string>
#include <vector>

#include "mu/mu_pages.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class CDataSpace;

class CPageMuView : public QWidget {
    Q_OBJECT
  public:
    CPageMuView(CPageMu& page, CDataSpace& space, const char* name, QWidget* parent = nullptr);

    CPageMu& Model() const { return page_; }
    virtual void Load();
    virtual void Store();

  signals:
    void helpRequested(const QString& page);
    // The page's "apply" ("view output" on the output page).
    void applyRequested();
    // The page put a text in the form's status line.
    void statusChanged();

  protected:
    QCheckBox* Tick(const char* text, const char* name, int& value);
    QLineEdit* Int(const char* label, const char* name, int& value, int low, int high);
    QLineEdit* Float(const char* label, const char* name, float& value);
    QLineEdit* Text(const char* label, const char* name, std::string& value);
    QComboBox* Choice(const char* label, const char* name, int& value, const QStringList& items);
    // An editable list of the desktop's array names.
    QComboBox* ArrayName(const char* label, const char* name, std::string& value);
    // The controls a defaults tick locks while it is on.
    void LockWith(QCheckBox* tick, std::vector<QWidget*> controls);
    void AddHelp();

    QFormLayout* form_;

  private:
    CPageMu& page_;
    CDataSpace& space_;
    std::vector<std::function<void()>> loads_;
    std::vector<std::function<void()>> stores_;
};

class CPageMuDataView : public CPageMuView {
    Q_OBJECT
  public:
    explicit CPageMuDataView(CPageMuData& page, CDataSpace& space, QWidget* parent = nullptr);
};

class CPageMuParamsView : public CPageMuView {
    Q_OBJECT
  public:
    explicit CPageMuParamsView(CPageMuParams& page, CDataSpace& space, QWidget* parent = nullptr);
    void Load() override;

  private:
    CPageMuParams& params_;
    QLineEdit* range_[2];
};

class CPageMuMaskView : public CPageMuView {
    Q_OBJECT
  public:
    // `width` is the record's row length, which the preview's rows have.
    CPageMuMaskView(CPageMuMask& page, CDataSpace& space, const int& width,
                    QWidget* parent = nullptr);
    void Load() override;

  private:
    CPageMuMask& mask_;
    const int& width_;
    QLabel* preview_;
};

class CPageMuWrapView : public CPageMuView {
    Q_OBJECT
  public:
    explicit CPageMuWrapView(CPageMuWrap& page, CDataSpace& space, QWidget* parent = nullptr);
};

class CPageMuFilterView : public CPageMuView {
    Q_OBJECT
  public:
    explicit CPageMuFilterView(CPageMuFilter& page, CDataSpace& space, QWidget* parent = nullptr);
};

class CPageMuOutputView : public CPageMuView {
    Q_OBJECT
  public:
    explicit CPageMuOutputView(CPageMuOutput& page, CDataSpace& space, QWidget* parent = nullptr);
};

class CPageMuLfeView : public CPageMuView {
    Q_OBJECT
  public:
    explicit CPageMuLfeView(CPageMuLfe& page, CDataSpace& space, QWidget* parent = nullptr);
};
