#include "util/KxObserver.h"

KxObserver::~KxObserver() = default;
