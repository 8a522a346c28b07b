/* tz4: engine library of a transient circuit simulator.
 *
 * Every function reports through one process-wide text that TZ4_GetError
 * returns: "OK" after success, or the function's name, ": " and the reasons
 * after a failure. Handles of documents and traces are non-negative ints,
 * unique across both and never reused. One host thread at a time.
 */
#ifndef TZ4_H
#define TZ4_H

#if defined(_WIN32)
#define TZ4_API __declspec(dllexport)
#else
#define TZ4_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Frame, documents and handles. */
TZ4_API const char* TZ4_GetError(void);
TZ4_API const char* TZ4_GetInfo(void);
TZ4_API int TZ4_GetLicense(void);
TZ4_API int TZ4_Open(const char* name);
TZ4_API int TZ4_Save(int ncir);
TZ4_API int TZ4_SaveAs(int ncir, const char* name);
TZ4_API int TZ4_Close(int ncir);

/* Values, parameters, inputs and outputs. A name is a dotted parameter path
 * such as "R1.R" or "X1.R3.R"; a bare component name means its first
 * parameter. The text getters return the full length + 1, also when the text
 * was cut to the buffer. Numbers count from 0 in each document. */
TZ4_API int TZ4_GetValue(int ncir, const char* name, double* v);
TZ4_API int TZ4_SetValue(int ncir, const char* name, double v);
TZ4_API int TZ4_GetText(int ncir, const char* name, char* text, int length);
TZ4_API int TZ4_SetText(int ncir, const char* name, const char* text);
TZ4_API int TZ4_GetParam(int ncir, const char* name);
TZ4_API int TZ4_GetParamValue(int ncir, int npar, double* v);
TZ4_API int TZ4_SetParamValue(int ncir, int npar, double v);
TZ4_API int TZ4_GetParamText(int ncir, int npar, char* text, int length);
TZ4_API int TZ4_SetParamText(int ncir, int npar, const char* text);
TZ4_API int TZ4_GetInput(int ncir, const char* name);
TZ4_API int TZ4_SetInputValue(int ncir, int nin, double v);
TZ4_API int TZ4_GetOutput(int ncir, const char* name);
TZ4_API int TZ4_GetOutputValue(int ncir, int nout, double* v);

/* Traces, run settings and recorded data. Trace handles share the numbering
 * of document handles. TZ4_GetDataSize returns the number of samples. */
TZ4_API int TZ4_GetTrace(int ncir, const char* name);
TZ4_API int TZ4_AddVTrace(int ncir, const char* name);
TZ4_API int TZ4_AddITrace(int ncir, const char* name);
TZ4_API int TZ4_AddPTrace(int ncir, const char* name);
TZ4_API int TZ4_AddVarTrace(int ncir, const char* name);
TZ4_API int TZ4_AddFuncTrace(int ncir, const char* text);
TZ4_API int TZ4_DeleteTrace(int ncir, int ntrace);
TZ4_API int TZ4_SetTimeout(int ncir, int t);
TZ4_API int TZ4_SetStep(int ncir, double step);
TZ4_API int TZ4_GetDataSize(int ncir, int ntrace);
TZ4_API int TZ4_GetDataAt(int ncir, int ntrace, int index, double* t, double* v);
TZ4_API int TZ4_GetLastData(int ncir, int ntrace, double* t, double* v);
TZ4_API int TZ4_GetData(int ncir, int ntrace, double t, double* v);

/* Run control. A run starts with TZ4_Start or with the first simulate call
 * on an idle document. Intervals add to the time asked for so far, which
 * TZ4_GetSimulationTime returns; TZ4_SimulateInterval lands exactly on it,
 * TZ4_Simulate stops at the first point at or past it, and TZ4_SimulateStep
 * stores one more point. A failure ends the run and keeps its results. */
TZ4_API int TZ4_GetSimulationTime(int ncir, double* t);
TZ4_API int TZ4_Start(int ncir);
TZ4_API int TZ4_Simulate(int ncir, double interval);
TZ4_API int TZ4_SimulateInterval(int ncir, double interval);
TZ4_API int TZ4_SimulateStep(int ncir);
TZ4_API int TZ4_SaveIC(int ncir);
TZ4_API int TZ4_DeleteOldData(int ncir);

#ifdef __cplusplus
}
#endif

#endif
