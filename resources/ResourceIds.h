/* Identifiers of the strings in the resource libraries. Read by the resource compiler too, so there
   is nothing but the preprocessor's in it. Existing translations count on the numbers: never give
   one a new meaning.

   Each area has a file of its own per language, <LANGUAGE>/<area>.rc. */
#ifndef VNBYTSTR_RESOURCE_IDS_H
#define VNBYTSTR_RESOURCE_IDS_H

/* messages.rc: what large objects look like in a list */
#define IDS_BLOB 34588
#define IDS_BLOB_LOCATOR 34589
#define IDS_CLOB 34590
#define IDS_CLOB_LOCATOR 34591
#define IDS_DBCLOB 34592
#define IDS_DBCLOB_LOCATOR 34593
#define IDS_LONG_VAR_BLOB 34760
#define IDS_LONG_VAR_CLOB 34761
#define IDS_LONG_VAR_DBCLOB 34762

/* messages.rc: buttons of message boxes */
#define IDS_BUTTON_OK 34801
#define IDS_BUTTON_CANCEL 34802
#define IDS_BUTTON_ABORT 34803
#define IDS_BUTTON_RETRY 34804
#define IDS_BUTTON_IGNORE 34805
#define IDS_BUTTON_YES 34806
#define IDS_BUTTON_NO 34807

/* messages.rc: help */
#define IDS_HELP_NOT_AVAILABLE 34820
#define IDS_HELP_CAPTION 34821

/* globals.rc: descriptions of the global variables */

/* controls.rc: list controls */

/* vnquery.rc: the sample program */

#endif
