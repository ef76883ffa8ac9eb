#pragma once

/// From now on, the first failure of each test leaves a picture of the screen, SUITE.TEST.png, and the front-end's log
/// if there is one, SUITE.TEST.log, in the folder that VELLUMKIT_RESULTS names. Nothing without that variable. A "/" of
/// a name becomes "_".
void RecordFailures();
