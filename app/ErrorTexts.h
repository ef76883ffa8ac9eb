#pragma once

/// Gives the program's own error codes their texts in the loaded language (`CustomErrorTexts`). Main thread, before a
/// second one exists.
void FillCustomErrorTexts();
