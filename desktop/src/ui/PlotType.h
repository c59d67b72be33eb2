// The kinds of track plot; their integer values are stored in the settings, so they never change.
#pragma once

enum class PlotType : int { Empty = 0, Speed = 1, Altitude = 2, Satellites = 3, Hdop = 4, Pdop = 5, Vdop = 6 };
