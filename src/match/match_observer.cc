#include "match/match_observer.h"

ZxPolMatchObserver::~ZxPolMatchObserver() = default;
