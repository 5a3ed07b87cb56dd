/// All that a test needs that drives the library as a host does: an engine, its log, files and pages.
#pragma once

#include "kit/audio.h"
#include "kit/documents.h"
#include "kit/engine.h"
#include "kit/log_capture.h"
#include "kit/temporary_directory.h"
#include "quenlis.h"

#include <string>
#include <thread>
