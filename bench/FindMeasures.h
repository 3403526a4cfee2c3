#pragma once

class PairRunner;

/// Finding words in the captions, file names and keywords of 100,000 photos, against what SQLite makes of the same
/// texts in memory.
void measureFindingWords(PairRunner &runner);
