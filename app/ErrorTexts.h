#pragma once

/// Gives the program's own error codes their texts in the loaded language (`CustomErrorTexts`).
void FillCustomErrorTexts();
