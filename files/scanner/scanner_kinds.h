// The scanner's file kinds in the open and save dispatch: open codes 7 (raw), 8 (pulsegen),
// 9 (plotpulse) and 12 (image file), and the pulsegen writer at save row 6. None has a row
// in the open dialog's filter list. Safe to call more than once.
#pragma once

void RegisterScannerKinds();
