// Time control of the analysis: end time, time step (0 selects the automatic
// stable step), print interval and the print schedule, the tracker interval
// and its schedule, and the target step of mass scaling (0: no scaling).
#pragma once

#include "Token.h"

class Archive;

#include <string>
#include <vector>

class ControlSet {
public:
    ControlSet() = default;
    virtual ~ControlSet() = default;

    void parseOstrel(std::vector<Token> tokens);
    void setInitialConditions() {}
    // True when results are due at time t; grants at most one print per call,
    // so a step longer than the print interval makes the schedule lag.
    bool timeToPrint(double t);
    // TRACK EVERY <interval>: tracker rows at an interval of their own, on
    // the same schedule rules as the prints; without it the trackers write
    // with the prints.
    bool hasTrackInterval() const { return trackStep > 0.0; }
    bool timeToTrack(double t);
    double getTrackStep() const { return trackStep; }
    // The deck line being read, for the checks made once every control line is in.
    void setLine(int line) { currentLine = line; }
    // Refuses a tracking interval longer than the run, naming its line.
    void checkTrackInterval() const;

    double getTimeStep() const { return timeStep; }
    double getPrintStep() const { return printStep; }
    double getEndTime() const { return endTime; }
    double getStartTime() const { return startTime; }
    std::string getWriter() const { return writer; }
    // MASS SCALING <target>: elements whose stable step is below the target
    // get mass until it is reached; 0 when the phrase is not given.
    double getMassScalingTarget() const { return massScalingTarget; }
    // CHECKPOINT EVERY <minutes> MINUTES, CHECKPOINT EVERY <interval> (model
    // time), CHECKPOINT OFF: without the keyword a checkpoint every 10
    // minutes of wall-clock time; 0 where that kind is not wanted.
    double getCheckpointMinutes() const { return checkpointMinutes; }
    double getCheckpointStep() const { return checkpointStep; }
    // True when a checkpoint is due at model time t on the model-time
    // schedule; one per call, the schedule skipping what a long step passed.
    bool timeToCheckpoint(double t);
    // The schedules' counters (see Checkpoint.h).
    void checkpoint(Archive& archive);

private:
    // CHECKPOINT at token i; returns the tokens it used.
    std::size_t readCheckpoint(const std::vector<Token>& tokens, std::size_t i);

    int printCount = 0;
    double startTime = 0.0;
    double endTime = 0.0;
    double timeStep = 0.0;
    double printStep = 0.0;
    double massScalingTarget = 0.0;
    int trackCount = 0;
    double trackStep = 0.0;
    int currentLine = 0, trackLine = 0;
    bool runGiven = false;
    double checkpointMinutes = 10.0;
    double checkpointStep = 0.0;
    bool checkpointGiven = false;
    long checkpointCount = 0;
    std::string writer = "VTK";
};
