// How much is tried, and from which seed on.
#pragma once

namespace zebstore::model
{

/// ZEB_MODEL in the environment: so many sequences.
int Sequences();
/// ZEB_MODEL_SEED in the environment: the seed of the first sequence; the next one has the next seed.
unsigned FirstSeed();

} // namespace zebstore::model
