// CViewEdit: the spreadsheet display: the current plane of its array in a table, one cell per
// sample, typed values written back with undo. The logic is CEditTable's; this class is the
// table widget, the scroll timer and the status line.
#pragma once

#include <QTableView>
#include <QTimer>

#include "display/edit_table.h"

class CEditModel;
class CMdiDoc;
class QLabel;

class CViewEdit : public QTableView, public CEditTable {
    Q_OBJECT
  public:
    explicit CViewEdit(CMdiDoc& doc, QWidget* parent = nullptr);

    CEditModel& Model() const { return *model_; }
    void SetStatusLine(QLabel* line) { status_line_ = line; }
    // Stops the timer and forgets the document; the frame is closing.
    void Detach();
    QTimer& Timer() { return timer_; }

  protected:
    bool StartTimer(int period) override;
    bool StopTimer() override;
    void Redraw() override;
    void ShowStatus(const std::string& text) override;

  private:
    CEditModel* model_;
    QTimer timer_;
    QLabel* status_line_ = nullptr;
    bool detached_ = false;
};
