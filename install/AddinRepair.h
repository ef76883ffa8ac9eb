#pragma once

/// Deletes the current user's settings that keep OneNote from loading the add-in: the lists of disabled items and the
/// switch "DisableAllAddins" of Office 14.0 to 16.0, installed or not, and the add-in's own "LoadBehavior", which is
/// deliberately removed, never set. Every deletion is logged; none can fail the caller. Any thread.
void RepairAddinSettings();
