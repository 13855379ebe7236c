// The numbers by which the module names its dialogs, controls, texts and pictures. Plain C, as the
// resource compiler reads it too. Every language module holds all of them. Dialogs, controls and
// texts are counted apart, so the same number can stand for one of each.
#ifndef POSTMARKER_RESOURCE_H
#define POSTMARKER_RESOURCE_H

// Pictures.
#define IDI_POSTMARKER 10001  // the sheet's small icon: 16, 20, 24, 32 and 48 pixels
#define IDB_BANNER 10002      // first and last page; twice the control's size at 96 dpi

// The tiles of the mail clients: an envelope with a letter in a color each, 48 pixels square, on
// white, which stands for transparent.
#define IDB_TILE_OUTLOOK 10003
#define IDB_TILE_WINDOWS_MAIL 10004
#define IDB_TILE_OUTLOOK_EXPRESS 10005
#define IDB_TILE_THUNDERBIRD 10006
#define IDB_TILE_INCREDIMAIL 10007
#define IDB_TILE_WINDOWS_LIVE_MAIL 10008

// Dialogs.
#define IDD_NEW_FOLDER 10012          // asks for a new folder's name
#define IDD_CONFIRMATION 10014        // asks whether a job is to stop
#define IDD_PAGE_CHOOSE_CLIENT 10015  // page with the tiles of the mail clients
#define IDD_PAGE_WELCOME 13000        // first page
#define IDD_PAGE_SPAM_FOLDER 13001    // page with the tree of folders
#define IDD_PAGE_PREFILL 13002        // page with the addresses for the list of allowed senders
#define IDD_PAGE_TRAIN 13003          // both pages with folders for the training of the filter
#define IDD_PROGRESS 13004            // the plain progress window
#define IDD_TRAIN 13005               // the progress window of the service
#define IDD_PAGE_SETTINGS 13006       // last page, with the three switches

// Controls that mean the same on every page.
#define IDC_HEADING 10001  // the page's title; large and red
#define IDC_BODY 10003     // what the page is for
#define IDC_BANNER 10011   // the picture at the left edge

// Welcome page.
#define IDC_WELCOME_CONTINUE 13050  // tells how to go on

// Client page.
#define IDC_CLIENT_LABEL 13053  // stands before the tiles and gives them their name
#define IDC_CLIENT_GRID 13032   // a tile for each mail client

// Prefill page: the first three are shown while addresses are read, the others afterwards.
#define IDC_PREFILL_RUNNING 10033   // tells what is being done
#define IDC_PREFILL_PROGRESS 10041  // how far it is
#define IDC_PREFILL_STOP 10043      // ends it with what was found so far
#define IDC_ADDRESS_LABEL 10030     // stands before the grid and gives it its name
#define IDC_ADDRESS_GRID 10016      // the addresses
#define IDC_ADD_ADDRESS 13033       // a new row
#define IDC_REMOVE_ADDRESS 13034    // takes the selected rows out

// Spam folder page.
#define IDC_FOLDER_LABEL 13051  // stands before the tree and gives it its name
#define IDC_FOLDER_TREE 10015   // the client's folders
#define IDC_NEW_FOLDER 10022    // opens IDD_NEW_FOLDER

// New folder dialog.
#define IDC_NEW_FOLDER_LABEL 13052  // stands before the edit control and gives it its name
#define IDC_NEW_FOLDER_NAME 10023   // the name typed

// Training pages. The notes are markup; each page shows its own.
#define IDC_TRAIN_NOTE_FIRST 10037   // tells which folders the first page asks for
#define IDC_TRAIN_NOTE_SECOND 10038  // the same of the second page
#define IDC_TRAIN_LABEL 13054        // stands before the tree and gives it its name
#define IDC_TRAIN_TREE 10018         // the client's folders, with check boxes

// Settings page.
#define IDC_SETTINGS_FINISH 13028  // second body text: tells how to end
#define IDC_MOVE_EMAILS 13029      // move spam to the folder
#define IDC_ADD_BLOCKED 13030      // add senders of blocked mails to the blocked list
#define IDC_ADD_UNBLOCKED 13031    // add senders of unblocked mails to the allowed list

// Progress windows. The first two are also those of the plain one; of the others, some are shown
// while the job runs, some afterwards.
#define IDC_PROGRESS_TEXT 10025      // what the host says
#define IDC_PROGRESS_BAR 10021       // how far it is
#define IDC_PROGRESS_HEADING 13007   // the window's title
#define IDC_PROGRESS_BODY 13008      // running: what is being done
#define IDC_PROGRESS_NOTE 13009      // running: how to end it
#define IDC_PROGRESS_STOP 13014      // running: ends it
#define IDC_PROGRESS_CLOSE 13015     // closes the window; enabled afterwards
#define IDC_PROGRESS_FINISHED 13017  // afterwards: it was finished
#define IDC_PROGRESS_HELP 13018      // afterwards: what the links are for
#define IDC_PROGRESS_SEPARATOR 13019 // a line above the button
#define IDC_SUPPORT_LABEL 13020      // afterwards: stands before the first link
#define IDC_SUPPORT_LINK 13022       // afterwards: a markup label with the link
#define IDC_SECOND_LABEL 13021       // afterwards: stands before the second link
#define IDC_SECOND_LINK 13023        // afterwards: a markup label with the link
#define IDC_PROGRESS_STOPPED 13025   // afterwards: it was stopped

// Texts of the message box's buttons, in the order of the results 1 to 7.
#define IDS_BUTTON_OK 800
#define IDS_BUTTON_CANCEL 801
#define IDS_BUTTON_ABORT 802
#define IDS_BUTTON_RETRY 803
#define IDS_BUTTON_IGNORE 804
#define IDS_BUTTON_YES 805
#define IDS_BUTTON_NO 806
#define IDS_BUTTON_TRY_AGAIN 807  // result 10
#define IDS_BUTTON_CONTINUE 808   // result 11

// Texts of the sheet and its pages.
#define IDS_TRAIN_FIRST 10007         // heading of the training page that asks for spam
#define IDS_TRAIN_SECOND 10008        // heading of the one that asks for wanted messages
#define IDS_MUST_SELECT_FOLDER 10009  // tip at Next: no folder, or a mailbox, is selected
#define IDS_FOLDER_NOT_CREATED 10011  // tip at Next: the client refused the new folder
#define IDS_MUST_SELECT_CLIENT 10014  // tip at Next: no mail client is selected
#define IDS_SHEET_CAPTION 10015    // the sheet's skinned caption; the pages' captions say the same
#define IDS_READING_FOLDERS 10016  // the tree's only item until the folders are there
#define IDS_RESTART_CLIENT 10017   // notice at the end; two %s, both wide, both the client's name
#define IDS_ADDRESS_IS_THERE 10018     // tip at a row being edited: another row has this address
#define IDS_ADDRESS_INVALID 10020      // tip at a row being edited: this can't be in the list
#define IDS_CLIENT_NOT_FOUND 10022     // under a client's name: it is not on this machine
#define IDS_NO_ADDRESSES 10023         // stands in the grid of addresses while it is empty
#define IDS_ADDRESS_GRID 10024         // name of the grid for who reads the screen aloud
#define IDS_DOMAIN_COLUMN 10025        // heading of the grid's second column
#define IDS_TYPE_ADDRESS 10026         // tip at a new row
#define IDS_ADDRESSES_LEFT_OUT 10027   // tip after a paste; one %d, the number of texts left out
#define IDS_ADDRESS_COLUMN 10028       // heading of the grid's first column
#define IDS_FOLDER_CAN_BE_CREATED 10029  // sentence that follows the folder page's body text
#define IDS_CLIENT_NOT_READY 10030       // under a client's name: its extension is missing
#define IDS_PROGRESS_CAPTION 10021     // the progress window's skinned caption; its own says the same
#define IDS_SUPPORT_SITE 10033         // host name of the suite's web site

#endif
