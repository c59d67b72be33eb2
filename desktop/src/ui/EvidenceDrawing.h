// What an evidence pack draws with Qt Gui (its frames and its report), handed to the pack by those who have Gui.
#pragma once

struct EvidenceRequest;

// Sets the pack's frame and report writers, and its speed unit from the locale's measurement system (mph where
// miles are the custom). Needs a QGuiApplication while the pack runs, on any thread.
void setEvidenceDrawing(EvidenceRequest& request);
