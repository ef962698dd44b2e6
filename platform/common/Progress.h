#pragma once

#include <string>

/// What an algorithm reports of its progress. Borrowed by a listener for the time of one call.
class ProgressReport {
 public:
    virtual ~ProgressReport() = default;
    virtual int DiscreteMeasure(const std::string& name) = 0;
    virtual double ScaleMeasure(const std::string& name) = 0;
};

/// Receives progress reports, on the thread that runs the algorithm.
class ProgressListener {
 public:
    virtual ~ProgressListener() = default;
    virtual void OnProgress(ProgressReport& report) = 0;
};

/// Asked once per record whether the run is to stop.
class QKQueryCancel {
 public:
    virtual ~QKQueryCancel() = default;
    virtual bool IsCancelled() = 0;
};
