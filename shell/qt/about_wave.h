// CAboutWave: the about dialog. A shear wave travels through a disk of tissue in 32 frames,
// one per 75 ms tick, looping.
#pragma once

#include <QDialog>
#include <QImage>
#include <QTimer>
#include <vector>

class QLabel;

class CAboutWave : public QDialog {
    Q_OBJECT
  public:
    static constexpr int kFrames = 32;
    static constexpr int kTickMs = 75;

    explicit CAboutWave(QWidget* parent = nullptr);

    int Frame() const { return frame_; }
    const QTimer& Timer() const { return timer_; }
    static QImage DrawFrame(int frame, int width, int height);

  private:
    void OnTick();

    std::vector<QImage> frames_;
    QLabel* picture_;
    QTimer timer_;
    int frame_ = 0;
};
