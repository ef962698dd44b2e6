/* A host in C outside of the house: runs a sign test of four records and prints the document.
 *
 * usage: host [LIBRARY]
 * Takes the functions of the library that it is linked with, or of the one that is named. */

#include <stdio.h>

#include "tiny_host.h"

static const char* const kSettings =
    "<Settings>"
    "<Setting name='relatedVariables' kind='stringVector'><Element value='before'/><Element value='after'/></Setting>"
    "<Setting name='isAutomaticallyRelated' kind='bool' value='false'/>"
    "<Setting name='RSign' kind='list'><Setting name='isSelected' kind='bool' value='true'/></Setting>"
    "<Setting name='done' kind='bool' value='true'/>"
    "</Settings>";

static const char* const kModel =
    "<DataModel totalCount='4' totalFreq='4'>"
    "<Field name='before' storage='number' level='continuous'/>"
    "<Field name='after' storage='number' level='continuous'/>"
    "</DataModel>";

static const double kValues[] = {1, 2, 2, 4, 3, 2, 4, 4};

int main(int argumentCount, char** arguments) {
    TinyLibrary library;
    TinyHost host;
    const char* missing = tiny_load(argumentCount > 1 ? arguments[1] : NULL, &library);
    int step;

    if (missing != NULL) {
        fprintf(stderr, "not bound: %s\n", missing);
        return 1;
    }
    if (argumentCount == 1 && library.initialise != hx_initialise) {
        fprintf(stderr, "the function that is linked is another one\n");
        return 1;
    }
    tiny_host_init(&host);
    host.host.interfaceVersion = 1; /* built when there was no other one: its iterator ends with NextBlock */
    host.applicationName = "foreign";
    host.settings = kSettings;
    host.sourceModel = host.executionModel = kModel;
    host.values = kValues;
    host.recordCount = host.recordsOfLaterPasses = 4;
    host.fieldCount = 2;
    step = tiny_host_run(&library, &host);
    if (step != 0 || host.content == NULL) {
        fprintf(stderr, "call %d failed\n%s", step, host.messages);
        return 1;
    }
    puts(host.content);
    tiny_host_free(&host);
    return 0;
}
