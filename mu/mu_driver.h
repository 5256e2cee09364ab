// CMuDriver: the engine's services over the data space. Reads take the arrays the record
// names, through their channels; stores go into MuOutputTarget arrays. The run log goes to
// the history, the status line to the host. Install() puts it under the engine for a scope.
//
//   CMuDriver driver(GlobalDataSpace());
//   CMuDriver::Installed use(driver);
//   wave_2d_1axis(&params);   // params' outputs are MuOutputTarget handles
#pragma once

#include <string>

#include "mu/mu_target.h"
#include "wave/driver.h"
#include "wave/snr.h"

class CDataSpace;

// The name of an output handle (a MuOutputTarget); "unnamed" for none.
const char* MuOutputName(wave_output output);

class CMuDriver : public wave_driver {
  public:
    explicit CMuDriver(CDataSpace& space) : space_(space) {}
    CMuDriver(const CMuDriver&) = delete;
    CMuDriver& operator=(const CMuDriver&) = delete;

    // The engine's driver for the life of a scope; the previous one comes back after it.
    class Installed {
      public:
        // The SNR stage names its outputs through the targets too.
        explicit Installed(wave_driver& driver)
            : previous_(set_wave_driver(&driver)),
              previous_namer_(set_snr_output_namer(MuOutputName)) {}
        ~Installed() {
            set_snr_output_namer(previous_namer_);
            set_wave_driver(previous_);
        }
        Installed(const Installed&) = delete;
        Installed& operator=(const Installed&) = delete;

      private:
        wave_driver* previous_;
        wave_output_namer previous_namer_;
    };

    // The display of a look target, at its first store; headless there is none.
    virtual void OpenDisplay2d(CZrkData* record, const char* palette) {
        (void)record;
        (void)palette;
    }

    int read_phase_stack(wave_params* p, float* buf) override;
    int read_max_magnitude(wave_params* p, float* buf) override;
    int read_magnitude_float(wave_params* p, float* buf) override;
    int store_image(const float* buf, wave_params* p, int kind, float** temp_holder,
                    wave_output output, int index, int total) override;
    int store_complex(const float* buf, wave_params* p, int planar, float** temp,
                      wave_output output) override;
    int store_byte_image(const uint8_t* buf, wave_params* p, wave_output output) override;
    void msg_fatal_text(const char* text) override;
    void status_text(const char* text) override;
    void status_clear() override;

    CDataSpace& Space() { return space_; }

  private:
    MuFirstStoreFn First();

    CDataSpace& space_;
    std::string status_;
    std::string log_line_;
};
