// The "scroll" menu every display frame carries: the mode (z, t, u, v, all), single steps,
// faster and slower, the eight periods and stop, each action with its objectName
// ("scroll_z", "scroll_next", "scroll_100ms", "scroll_stop" ...).
#pragma once

class CMdiView;
class QMenu;
class QObject;

// Fills `menu`; the actions reach `view` while `context` lives.
void AddScrollMenu(QMenu* menu, CMdiView* view, QObject* context);
