<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="he" sourcelanguage="en">
<context>
    <name>Zolvar</name>
    <message numerus="yes">
        <source>%n version(s)</source>
        <translation>
            <numerusform>גרסה אחת</numerusform>
            <numerusform>%n גרסאות</numerusform>
        </translation>
    </message>
    <message>
        <source>You</source>
        <translation>אתם</translation>
    </message>
    <message>
        <source>%1 (this one is here)</source>
        <translation>%1 (זו שכאן)</translation>
    </message>
    <message>
        <source>you</source>
        <translation>אתם</translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Written by %1
Changed %2
Logged %3</source>
        <translation>נכתבה על ידי %1
שונתה %2
נרשמה %3</translation>
    </message>
    <message>
        <source>File and its versions</source>
        <translation>קובץ וגרסאותיו</translation>
    </message>
    <message>
        <source>Changed</source>
        <translation>שונה</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>גודל</translation>
    </message>
    <message>
        <source>Chosen by</source>
        <translation>נבחר על ידי</translation>
    </message>
    <message>
        <source>Files in conflict</source>
        <translation>קבצים בהתנגשות</translation>
    </message>
    <message>
        <source>&amp;Use This Version</source>
        <translation>&amp;שימוש בגרסה זו</translation>
    </message>
    <message>
        <source>Put the selected version into your folder</source>
        <translation>העברת הגרסה שנבחרה אל התיקייה שלכם</translation>
    </message>
    <message>
        <source>&amp;Delete This Version…</source>
        <translation>&amp;מחיקת גרסה זו…</translation>
    </message>
    <message>
        <source>Delete the selected version for everybody</source>
        <translation>מחיקת הגרסה שנבחרה אצל כולם</translation>
    </message>
    <message>
        <source>&amp;Compare</source>
        <translation>ה&amp;שוואה</translation>
    </message>
    <message>
        <source>Look at the selected version beside the one that is here</source>
        <translation>הצגת הגרסה שנבחרה לצד זו שכאן</translation>
    </message>
    <message>
        <source>&amp;Keep Mine</source>
        <translation>&amp;השארת שלי</translation>
    </message>
    <message>
        <source>Settle the selected files: your version stays</source>
        <translation>יישוב הקבצים שנבחרו: הגרסה שלכם נשארת</translation>
    </message>
    <message>
        <source>Use &amp;Theirs</source>
        <translation>שימוש &amp;בשלהם</translation>
    </message>
    <message>
        <source>Settle the selected files: the others&apos; version stays</source>
        <translation>יישוב הקבצים שנבחרו: הגרסה של האחרים נשארת</translation>
    </message>
    <message>
        <source>Use Version &amp;From</source>
        <translation>שימוש בגרסה &amp;של</translation>
    </message>
    <message>
        <source>Settle the selected files: one person&apos;s version stays</source>
        <translation>יישוב הקבצים שנבחרו: הגרסה של אדם אחד נשארת</translation>
    </message>
    <message>
        <source>&amp;Undo Choice</source>
        <translation>&amp;ביטול הבחירה</translation>
    </message>
    <message>
        <source>No conflicts</source>
        <translation>אין התנגשויות</translation>
    </message>
    <message>
        <source>When two people change one file at once, both versions are kept, and you choose here.</source>
        <translation>כששני אנשים משנים קובץ אחד בו־זמנית, שתי הגרסאות נשמרות, ואתם בוחרים כאן.</translation>
    </message>
    <message>
        <source>The other versions go to the Trash of those who have them, and everybody goes on with this one.</source>
        <translation>הגרסאות האחרות עוברות לאשפה אצל מי שמחזיק בהן, וכולם ממשיכים עם זו.</translation>
    </message>
    <message numerus="yes">
        <source>Keep your version of %n file(s)?</source>
        <translation>
            <numerusform>להשאיר את הגרסה שלכם של קובץ אחד?</numerusform>
            <numerusform>להשאיר את הגרסה שלכם של %n קבצים?</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Your version of %n file(s) stays.</source>
        <translation>
            <numerusform>הגרסה שלכם של קובץ אחד נשארת.</numerusform>
            <numerusform>הגרסה שלכם של %n קבצים נשארת.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Use the others&apos; version of %n file(s)?</source>
        <translation>
            <numerusform>להשתמש בגרסת האחרים של קובץ אחד?</numerusform>
            <numerusform>להשתמש בגרסת האחרים של %n קבצים?</numerusform>
        </translation>
    </message>
    <message>
        <source>Yours is kept for a while: Undo brings it back.</source>
        <translation>שלכם נשמרת לזמן מה: הביטול מחזיר אותה.</translation>
    </message>
    <message numerus="yes">
        <source>The others&apos; version of %n file(s) is coming.</source>
        <translation>
            <numerusform>גרסת האחרים של קובץ אחד בדרך.</numerusform>
            <numerusform>גרסת האחרים של %n קבצים בדרך.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Use the version from %1 of %n file(s)?</source>
        <translation>
            <numerusform>להשתמש בגרסה של %1 של קובץ אחד?</numerusform>
            <numerusform>להשתמש בגרסה של %1 של %n קבצים?</numerusform>
        </translation>
    </message>
    <message>
        <source>&amp;Use</source>
        <translation>&amp;שימוש</translation>
    </message>
    <message numerus="yes">
        <source>The version from %1 of %n file(s) is coming.</source>
        <translation>
            <numerusform>הגרסה של %1 של קובץ אחד בדרך.</numerusform>
            <numerusform>הגרסה של %1 של %n קבצים בדרך.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n selected file(s) have no such version and stay as they are.</source>
        <translation>
            <numerusform>לקובץ אחד שנבחר אין גרסה כזו והוא נשאר כפי שהוא.</numerusform>
            <numerusform>ל־%n קבצים שנבחרו אין גרסה כזו והם נשארים כפי שהם.</numerusform>
        </translation>
    </message>
    <message>
        <source>The version from %1 is coming.</source>
        <translation>הגרסה של %1 בדרך.</translation>
    </message>
    <message>
        <source>It is the one in your folder. It goes to the Trash of everybody who has it, and another version takes its place. Undo brings it back for you.</source>
        <translation>זו הגרסה שבתיקייה שלכם. היא עוברת לאשפה אצל כל מי שמחזיק בה, וגרסה אחרת תופסת את מקומה. הביטול מחזיר אותה עבורכם.</translation>
    </message>
    <message>
        <source>It goes to the Trash of everybody who has it. Nothing changes in your folder.</source>
        <translation>היא עוברת לאשפה אצל כל מי שמחזיק בה. בתיקייה שלכם דבר לא משתנה.</translation>
    </message>
    <message>
        <source>Delete the version from %1 for everybody?</source>
        <translation>למחוק את הגרסה של %1 אצל כולם?</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;מחיקה</translation>
    </message>
    <message>
        <source>The version from %1 is deleted.</source>
        <translation>הגרסה של %1 נמחקה.</translation>
    </message>
    <message>
        <source>Not everything could be brought back.</source>
        <translation>לא הכול הוחזר.</translation>
    </message>
    <message numerus="yes">
        <source>Your version of %n file(s) is back.</source>
        <translation>
            <numerusform>הגרסה שלכם של קובץ אחד חזרה.</numerusform>
            <numerusform>הגרסה שלכם של %n קבצים חזרה.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>The same or the like happened to %n more file(s).</source>
        <translation>
            <numerusform>כך או בדומה קרה לקובץ אחד נוסף.</numerusform>
            <numerusform>כך או בדומה קרה ל־%n קבצים נוספים.</numerusform>
        </translation>
    </message>
    <message>
        <source>Not every choice could be carried out.</source>
        <translation>לא כל בחירה בוצעה.</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;ביטול</translation>
    </message>
    <message>
        <source>Select a file to see its versions.</source>
        <translation>בחרו קובץ כדי לראות את גרסאותיו.</translation>
    </message>
    <message>
        <source>Versions of %1</source>
        <translation>הגרסאות של %1</translation>
    </message>
    <message>
        <source>No version of this file is known yet.</source>
        <translation>עדיין לא ידועה גרסה של קובץ זה.</translation>
    </message>
    <message>
        <source>Differences in %1</source>
        <translation>ההבדלים ב־%1</translation>
    </message>
    <message>
        <source>&amp;Open Both</source>
        <translation>&amp;פתיחת שתיהן</translation>
    </message>
    <message>
        <source>&apos;{}&apos; does not take part in &apos;{}&apos; now.</source>
        <translation>&apos;{}&apos; אינו משתתף כעת ב־&apos;{}&apos;.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; has no folder on this computer.</source>
        <translation>ל־&apos;{}&apos; אין תיקייה במחשב זה.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; has {} different/conflicting versions.</source>
        <translation>ל־&apos;{}&apos; יש {} גרסאות מתנגשות.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; holds Zolvar&apos;s own files, which must not be shared.</source>
        <translation>&apos;{}&apos; מכיל את הקבצים של Zolvar עצמו, ואין לשתף אותם.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is left out: its name or path cannot be shared.</source>
        <translation>&apos;{}&apos; שב־{} מושמט: אי אפשר לשתף את שמו או את נתיבו.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is left out: its path is longer than the {} bytes that the system can open.</source>
        <translation>&apos;{}&apos; שב־{} מושמט: נתיבו ארוך מ־{} הבתים שהמערכת יכולה לפתוח.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is left out: only files, folders and links are shared.</source>
        <translation>&apos;{}&apos; שב־{} מושמט: משתפים רק קבצים, תיקיות וקישורים.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; in {} is on another drive than before; files missing beneath it are not taken for deleted.</source>
        <translation>&apos;{}&apos; שב־{} נמצא בכונן אחר מקודם; קבצים החסרים תחתיו אינם נחשבים למחוקים.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is in use. Unsubscribe first, or move its folder.</source>
        <translation>&apos;{}&apos; בשימוש. בטלו תחילה את ההרשמה, או העבירו את התיקייה.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is no id of a version.</source>
        <translation>&apos;{}&apos; אינו מזהה של גרסה.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is no path of a file in &apos;{}&apos;.</source>
        <translation>&apos;{}&apos; אינו נתיב של קובץ ב־&apos;{}&apos;.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; is not missing in &apos;{}&apos;.</source>
        <translation>&apos;{}&apos; אינו חסר ב־&apos;{}&apos;.</translation>
    </message>
    <message>
        <source>&apos;{}&apos; lies in the Trash.</source>
        <translation>&apos;{}&apos; נמצא באשפה.</translation>
    </message>
    <message>
        <source>A setting&apos;s name is not empty and has no &apos;/&apos; and no control character.</source>
        <translation>שם של הגדרה אינו ריק ואין בו &apos;/&apos; ולא תו בקרה.</translation>
    </message>
    <message>
        <source>An authorization error happened while syncing.

Either you haven&apos;t set a password or you and subscriber &apos;{0}&apos; set different passwords for this Sync Folder. 

Resolve this issue by changing your password or make &apos;{0}&apos; change hers/his.

Note, that each subscribers sets her own password and you will only sync with subscribers with matching passwords. Therefore you can choose to ignore certain subscribers to avoid this warning.</source>
        <translation>אירעה שגיאת הרשאה בזמן הסנכרון.

ייתכן שלא קבעתם סיסמה, או שאתם ו־&apos;{0}&apos; קבעתם סיסמאות שונות לתיקייה זו.

שנו את סיסמתכם, או בקשו מ־&apos;{0}&apos; לשנות את שלו.

כל משתתף קובע סיסמה משלו, והסנכרון נעשה רק עם מי שסיסמתו זהה. לכן אפשר להתעלם ממשתתפים מסוימים כדי להימנע מאזהרה זו.</translation>
    </message>
    <message>
        <source>Another machine shares &apos;{}&apos; as {}, the name of this one. Two machines with one name would write one log, so the folder was stopped here. Give one of them another host name.</source>
        <translation>מחשב אחר משתף את &apos;{}&apos; בתור {}, שמו של מחשב זה. שני מחשבים בעלי שם אחד היו כותבים יומן אחד, ולכן התיקייה נעצרה כאן. תנו לאחד מהם שם אחר.</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>ביטול</translation>
    </message>
    <message>
        <source>Change My Password</source>
        <translation>שינוי הסיסמה שלי</translation>
    </message>
    <message>
        <source>Conflict in Folder &apos;{}&apos;:</source>
        <translation>התנגשות בתיקייה &apos;{}&apos;:</translation>
    </message>
    <message>
        <source>Continue</source>
        <translation>המשך</translation>
    </message>
    <message>
        <source>Could not activate the synced folder &apos;{}&apos;</source>
        <translation>לא ניתן היה להפעיל את התיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not append to &apos;{}&apos;</source>
        <translation>לא ניתן היה להוסיף אל &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not ask for the free space of &apos;{}&apos;</source>
        <translation>לא ניתן היה לברר את המקום הפנוי של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not change the synced folder &apos;{}&apos;</source>
        <translation>לא ניתן היה לשנות את התיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not choose a version of &apos;{}&apos;</source>
        <translation>לא ניתן היה לבחור גרסה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not copy &apos;{}&apos;</source>
        <translation>לא ניתן היה להעתיק את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not create the Sync Folder &apos;{}&apos;</source>
        <translation>לא ניתן היה ליצור את התיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not create the folder &apos;{}&apos;</source>
        <translation>לא ניתן היה ליצור את התיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not delete the password of &apos;{}&apos;</source>
        <translation>לא ניתן היה למחוק את הסיסמה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not describe &apos;{}&apos;</source>
        <translation>לא ניתן היה לתאר את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not fetch a version of &apos;{}&apos;</source>
        <translation>לא ניתן היה להביא גרסה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not fetch from &apos;{}&apos;</source>
        <translation>לא ניתן היה להביא מ־&apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not find our own change log &apos;{}&apos;</source>
        <translation>יומן השינויים שלנו &apos;{}&apos; לא נמצא</translation>
    </message>
    <message>
        <source>Could not find the computer &apos;{}&apos;</source>
        <translation>המחשב &apos;{}&apos; לא נמצא</translation>
    </message>
    <message>
        <source>Could not find the file &apos;{}&apos;</source>
        <translation>הקובץ &apos;{}&apos; לא נמצא</translation>
    </message>
    <message>
        <source>Could not find the folder &apos;{}&apos;</source>
        <translation>התיקייה &apos;{}&apos; לא נמצאה</translation>
    </message>
    <message>
        <source>Could not find the host &apos;{}&apos;</source>
        <translation>המחשב &apos;{}&apos; לא נמצא</translation>
    </message>
    <message>
        <source>Could not find the kept version &apos;{}&apos;</source>
        <translation>הגרסה השמורה &apos;{}&apos; לא נמצאה</translation>
    </message>
    <message>
        <source>Could not find the transfer tool &apos;{}&apos;</source>
        <translation>כלי ההעברה &apos;{}&apos; לא נמצא</translation>
    </message>
    <message>
        <source>Could not find the version &apos;{}&apos;</source>
        <translation>הגרסה &apos;{}&apos; לא נמצאה</translation>
    </message>
    <message>
        <source>Could not flush &apos;{}&apos;</source>
        <translation>לא ניתן היה להשלים את הכתיבה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not label &apos;{}&apos;</source>
        <translation>לא ניתן היה לסמן את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not link &apos;{}&apos;</source>
        <translation>לא ניתן היה לקשר את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not list the files of &apos;{}&apos;</source>
        <translation>לא ניתן היה למנות את הקבצים של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not load logs &apos;{}&apos;</source>
        <translation>לא ניתן היה לטעון את היומנים &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not lock &apos;{}&apos;</source>
        <translation>לא ניתן היה לנעול את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not look at &apos;{}&apos;</source>
        <translation>לא ניתן היה לבדוק את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not make a folder for replaced files in &apos;{}&apos;</source>
        <translation>לא ניתן היה ליצור תיקייה לקבצים שהוחלפו ב־&apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not make the folder &apos;{}&apos;</source>
        <translation>לא ניתן היה ליצור את התיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not make the folder of &apos;{}&apos;</source>
        <translation>לא ניתן היה ליצור את התיקייה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not make the link &apos;{}&apos;</source>
        <translation>לא ניתן היה ליצור את הקישור &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not move into place &apos;{}&apos;</source>
        <translation>לא ניתן היה להעביר למקומו את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not move to the Trash &apos;{}&apos;</source>
        <translation>לא ניתן היה להעביר לאשפה את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not open the folder &apos;{}&apos;</source>
        <translation>לא ניתן היה לפתוח את התיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not reach the keyring &apos;{}&apos;</source>
        <translation>לא ניתן היה להגיע למחזיק המפתחות &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not reach the synced folder &apos;{}&apos;</source>
        <translation>לא ניתן היה להגיע לתיקייה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not read &apos;{}&apos;</source>
        <translation>לא ניתן היה לקרוא את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not read the link &apos;{}&apos;</source>
        <translation>לא ניתן היה לקרוא את הקישור &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not read the password of &apos;{}&apos;</source>
        <translation>לא ניתן היה לקרוא את הסיסמה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not remove &apos;{}&apos;</source>
        <translation>לא ניתן היה להסיר את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not rename &apos;{}&apos;</source>
        <translation>לא ניתן היה לשנות את השם של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not restore &apos;{}&apos;</source>
        <translation>לא ניתן היה לשחזר את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not restore files in &apos;{}&apos;</source>
        <translation>לא ניתן היה לשחזר קבצים ב־&apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not set the password of &apos;{}&apos;</source>
        <translation>לא ניתן היה לקבוע את הסיסמה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not set the time of &apos;{}&apos;</source>
        <translation>לא ניתן היה לקבוע את הזמן של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not start the program &apos;{}&apos;</source>
        <translation>לא ניתן היה להפעיל את התוכנה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not start the transfer daemon &apos;{}&apos;</source>
        <translation>לא ניתן היה להפעיל את שירות ההעברה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not stop the transfer daemon &apos;{}&apos;</source>
        <translation>לא ניתן היה לעצור את שירות ההעברה &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not store the password of &apos;{}&apos;</source>
        <translation>לא ניתן היה לשמור את הסיסמה של &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Could not write &apos;{}&apos;</source>
        <translation>לא ניתן היה לכתוב את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>Deactivate the Folder</source>
        <translation>השבתת התיקייה</translation>
    </message>
    <message>
        <source>Delete Everywhere</source>
        <translation>מחיקה בכל מקום</translation>
    </message>
    <message>
        <source>Error starting client-server protocol. Too many clients?</source>
        <translation>השיחה עם המחשב האחר לא נפתחה. יותר מדי מחשבים בבת אחת?</translation>
    </message>
    <message>
        <source>Error: Server did not start (exitcode {})</source>
        <translation>שירות ההעברה לא הופעל (מצב {})</translation>
    </message>
    <message>
        <source>Everything is paused. Resume with: zolvar resume</source>
        <translation>הכול בהשהיה. לחידוש: zolvar resume</translation>
    </message>
    <message>
        <source>Folder Path not Accessible</source>
        <translation>התיקייה אינה נגישה</translation>
    </message>
    <message>
        <source>Got {} in &apos;{}&apos;:</source>
        <translation>התקבלו {} ב־&apos;{}&apos;:</translation>
    </message>
    <message>
        <source>Ignoring Subscriber &apos;{}&apos;</source>
        <translation>התעלמות מ־&apos;{}&apos;</translation>
    </message>
    <message>
        <source>It has no place on this machine.</source>
        <translation>אין לה מקום במחשב זה.</translation>
    </message>
    <message>
        <source>It was refused without a reason.</source>
        <translation>הבקשה סורבה ללא סיבה.</translation>
    </message>
    <message>
        <source>Its Zolvar speaks another version of the protocol.</source>
        <translation>ה־Zolvar שלו מדבר גרסה אחרת של הפרוטוקול.</translation>
    </message>
    <message>
        <source>Its password cannot be read; unlock the keyring and share it again.</source>
        <translation>אי אפשר לקרוא את הסיסמה שלה; פתחו את מחזיק המפתחות ושתפו אותה שוב.</translation>
    </message>
    <message>
        <source>Its password is being read.</source>
        <translation>הסיסמה שלה נקראת כעת.</translation>
    </message>
    <message>
        <source>Left out {} damaged or unsafe lines ({} bytes) of the change log &apos;{}&apos; in {}.</source>
        <translation>{} שורות פגומות או לא בטוחות ({} בתים) של יומן השינויים &apos;{}&apos; שב־{} הושמטו.</translation>
    </message>
    <message>
        <source>Moved Addresses to Trash</source>
        <translation>כתובות הועברו לאשפה</translation>
    </message>
    <message>
        <source>Moved Files to Trash</source>
        <translation>קבצים הועברו לאשפה</translation>
    </message>
    <message>
        <source>Network-Delete files in &apos;{}&apos;?</source>
        <translation>למחוק קבצים של &apos;{}&apos; בכל הרשת?</translation>
    </message>
    <message>
        <source>No file is missing in &apos;{}&apos;.</source>
        <translation>שום קובץ לא חסר ב־&apos;{}&apos;.</translation>
    </message>
    <message>
        <source>No version was kept at &apos;{}&apos;.</source>
        <translation>לא נשמרה גרסה ב־&apos;{}&apos;.</translation>
    </message>
    <message>
        <source>Not Subscribed to Folder</source>
        <translation>התיקייה אינה במינוי</translation>
    </message>
    <message>
        <source>Open Date and Time Preference Pane...</source>
        <translation>פתיחת הגדרות התאריך והשעה…</translation>
    </message>
    <message>
        <source>Open Parent Folder</source>
        <translation>פתיחת התיקייה המכילה</translation>
    </message>
    <message>
        <source>Open Sharing Preference Pane...</source>
        <translation>פתיחת הגדרות חומת האש…</translation>
    </message>
    <message>
        <source>Others share a folder named &apos;{}&apos; already. Subscribe to it, or choose another name.</source>
        <translation>אחרים כבר משתפים תיקייה בשם &apos;{}&apos;. הירשמו אליה, או בחרו שם אחר.</translation>
    </message>
    <message>
        <source>Password Failure for Sync Folder
&apos;{}&apos;</source>
        <translation>בעיית סיסמה בתיקייה
&apos;{}&apos;</translation>
    </message>
    <message>
        <source>Please set the computer&apos;s clock to the current time. Otherwise this could lead to unwanted effects.

The clock is currently off by {:.1f} seconds.

Tip: Switch on &apos;network time&apos; in the &apos;Date and Time&apos; system preferences.</source>
        <translation>כוונו את שעון המחשב לשעה הנכונה. אחרת ייתכנו תוצאות לא רצויות.

השעון סוטה כעת ב־{} שניות.

עצה: הפעילו את שעון הרשת בהגדרות &apos;תאריך ושעה&apos;.</translation>
    </message>
    <message>
        <source>Re-Get</source>
        <translation>הבאה מחדש</translation>
    </message>
    <message>
        <source>Synced Folder &apos;{}&apos; is not accessible to Zolvar.
Please check the path &apos;{}&apos;.</source>
        <translation>התיקייה &apos;{}&apos; אינה נגישה ל־Zolvar.
בדקו את הנתיב &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>Synchronization Error</source>
        <translation>שגיאת סנכרון</translation>
    </message>
    <message>
        <source>The Computer&apos;s Firewall Blocks Zolvar</source>
        <translation>חומת האש של המחשב חוסמת את Zolvar</translation>
    </message>
    <message>
        <source>The Synced Folder &apos;{}&apos; and all contained data will be put in the trash.</source>
        <translation>התיקייה &apos;{}&apos; וכל תוכנה יועברו לאשפה.</translation>
    </message>
    <message>
        <source>The computer&apos;s clock is off!</source>
        <translation>שעון המחשב אינו מדויק!</translation>
    </message>
    <message>
        <source>The computer&apos;s clock is off! A change was logged after one that lies in the future. Please set the computer&apos;s clock to the current time.</source>
        <translation>שעון המחשב אינו מדויק! שינוי נרשם אחרי אחד שבעתיד. כוונו את השעון לשעה הנכונה.</translation>
    </message>
    <message>
        <source>The computer&apos;s firewall is currently blocking the local TCP port {}. Please unblock this port in the System Preferences/Sharing preference pane.
</source>
        <translation>חומת האש של המחשב חוסמת כעת את יציאת ה־TCP המקומית {}. פתחו יציאה זו בהגדרות המערכת.
</translation>
    </message>
    <message>
        <source>The file &apos;{}&apos; is about to be switched to the version from &apos;{}&apos; with date &apos;{}&apos;.</source>
        <translation>הקובץ &apos;{}&apos; יוחלף בגרסה של &apos;{}&apos; מתאריך &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>The folder &apos;{}&apos; was moved to &apos;{}&apos; and is no longer kept in step.</source>
        <translation>התיקייה &apos;{}&apos; הועברה אל &apos;{}&apos; ואינה מעודכנת עוד.</translation>
    </message>
    <message>
        <source>The folder is a work area of version control (&apos;{}&apos;). Files of it that change together may arrive one by one on other computers; better let version control carry them.</source>
        <translation>התיקייה היא אזור עבודה של ניהול גרסאות (&apos;{}&apos;). קבצים בה המשתנים יחד עשויים להגיע אחד אחד למחשבים אחרים; מוטב שניהול הגרסאות יעביר אותם.</translation>
    </message>
    <message>
        <source>The folder must be named &apos;{}&apos;, as the shared folder is.</source>
        <translation>שם התיקייה חייב להיות &apos;{}&apos;, כשם התיקייה המשותפת.</translation>
    </message>
    <message>
        <source>The folder you selected is not suitable for sharing. It contains database files (in &apos;{}&apos;) which are not designed to be changed by any application other than its creator. If you try anyway, you are asking for touble.

Please select or create another folder to share.</source>
        <translation>התיקייה שבחרתם אינה מתאימה לשיתוף. יש בה קובצי מסד נתונים (ב־&apos;{}&apos;) שרק התוכנה שיצרה אותם אמורה לשנות. אם תנסו בכל זאת, צפויות בעיות.

בחרו או צרו תיקייה אחרת.</translation>
    </message>
    <message>
        <source>The folder you selected is not suitable for sharing. It overlaps with the existing shared folder &apos;{}&apos;.

Please select or create another folder to share.</source>
        <translation>התיקייה שבחרתם אינה מתאימה לשיתוף. היא חופפת לתיקייה המשותפת &apos;{}&apos;.

בחרו או צרו תיקייה אחרת.</translation>
    </message>
    <message>
        <source>The folder&apos;s path cannot be served by the transfer daemon. {}</source>
        <translation>שירות ההעברה אינו יכול להציע את נתיב התיקייה. {}</translation>
    </message>
    <message>
        <source>The folder&apos;s path is too long.</source>
        <translation>נתיב התיקייה ארוך מדי.</translation>
    </message>
    <message>
        <source>The folder&apos;s path must be a full one, beginning with &apos;/&apos;.</source>
        <translation>נתיב התיקייה חייב להיות מלא ולהתחיל ב־&apos;/&apos;.</translation>
    </message>
    <message>
        <source>The folder&apos;s path must begin with &apos;/&apos; and name a folder.</source>
        <translation>נתיב התיקייה חייב להתחיל ב־&apos;/&apos; ולציין תיקייה.</translation>
    </message>
    <message>
        <source>The link &apos;{}&apos; in {} is left out: it points outside the folder.</source>
        <translation>הקישור &apos;{}&apos; שב־{} מושמט: הוא מצביע אל מחוץ לתיקייה.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; begins or ends with a blank or contains two in a row.</source>
        <translation>השם &apos;{}&apos; מתחיל או מסתיים ברווח או מכיל שני רווחים רצופים.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; begins with &apos;{}&apos;, which a shared folder cannot have.</source>
        <translation>השם &apos;{}&apos; מתחיל ב־&apos;{}&apos;, ואין זה אפשרי בתיקייה משותפת.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; contains the character &apos;{}&apos;, which a shared folder cannot have.</source>
        <translation>השם &apos;{}&apos; מכיל את התו &apos;{}&apos;, ואין זה אפשרי בתיקייה משותפת.</translation>
    </message>
    <message>
        <source>The name &apos;{}&apos; has another meaning and cannot be used.</source>
        <translation>לשם &apos;{}&apos; יש משמעות אחרת ואי אפשר להשתמש בו.</translation>
    </message>
    <message>
        <source>The name contains a control character.</source>
        <translation>השם מכיל תו בקרה.</translation>
    </message>
    <message>
        <source>The name is empty.</source>
        <translation>השם ריק.</translation>
    </message>
    <message>
        <source>The name is not valid UTF-8 text.</source>
        <translation>השם אינו טקסט UTF-8 תקין.</translation>
    </message>
    <message>
        <source>The name is {} bytes long; at most {} are possible.</source>
        <translation>אורך השם {} בתים; אפשריים לכל היותר {}.</translation>
    </message>
    <message>
        <source>The password of &apos;{}&apos; cannot be read ({}). The folder is neither served nor fetched until the keyring is unlocked or the password is set anew.</source>
        <translation>אי אפשר לקרוא את הסיסמה של &apos;{}&apos; ({}). התיקייה אינה מוצעת ואינה מובאת עד שייפתח מחזיק המפתחות או תיקבע סיסמה חדשה.</translation>
    </message>
    <message>
        <source>The password of &apos;{}&apos; cannot be read; nothing is synced.</source>
        <translation>אי אפשר לקרוא את הסיסמה של &apos;{}&apos;; דבר אינו מסונכרן.</translation>
    </message>
    <message>
        <source>The passwords of the two sides differ, or one side has none.</source>
        <translation>הסיסמאות של שני הצדדים שונות, או שלצד אחד אין סיסמה.</translation>
    </message>
    <message>
        <source>The path to fetch to must be a full one, beginning with &apos;/&apos;.</source>
        <translation>הנתיב שאליו מביאים חייב להיות מלא ולהתחיל ב־&apos;/&apos;.</translation>
    </message>
    <message>
        <source>The setting &apos;activePools&apos; is a JSON array of names, like [&quot;Docs&quot;].</source>
        <translation>ההגדרה &apos;activePools&apos; היא מערך JSON של שמות, כמו [&quot;Docs&quot;].</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is &apos;yes&apos; or &apos;no&apos;.</source>
        <translation>ההגדרה &apos;{}&apos; היא &apos;yes&apos; או &apos;no&apos;.</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is a whole number.</source>
        <translation>ההגדרה &apos;{}&apos; היא מספר שלם.</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is one of: {}.</source>
        <translation>ההגדרה &apos;{}&apos; היא אחת מאלה: {}.</translation>
    </message>
    <message>
        <source>The setting &apos;{}&apos; is the name of a host, or none.</source>
        <translation>ההגדרה &apos;{}&apos; היא שם של מחשב, או ריקה.</translation>
    </message>
    <message>
        <source>The transfer tool &apos;{}&apos; does not tell its version.</source>
        <translation>כלי ההעברה &apos;{}&apos; אינו מוסר את גרסתו.</translation>
    </message>
    <message>
        <source>The transfer tool rsync {}.{}.{} has known security holes. Please update it to 3.4.3 or later.</source>
        <translation>בכלי ההעברה rsync {}.{}.{} יש פרצות אבטחה ידועות. עדכנו אותו לגרסה 3.4.3 ומעלה.</translation>
    </message>
    <message>
        <source>There is a file of that name</source>
        <translation>כבר יש קובץ בשם זה</translation>
    </message>
    <message>
        <source>There is already a Sync Folder with the same name present</source>
        <translation>כבר יש תיקייה מסונכרנת בשם זה</translation>
    </message>
    <message>
        <source>There is already a Sync Folder with the same name present.</source>
        <translation>כבר יש תיקייה מסונכרנת בשם זה.</translation>
    </message>
    <message>
        <source>There is no folder at &apos;{}&apos;.</source>
        <translation>אין תיקייה ב־&apos;{}&apos;.</translation>
    </message>
    <message>
        <source>There is no folder named &apos;{}&apos;.</source>
        <translation>אין תיקייה בשם &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>There is no open question about &apos;{}&apos;.</source>
        <translation>אין שאלה פתוחה על &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>Warning: You are not subscribed to the Synced Folder &apos;{}&apos;. The Finder will therefore not necessarily show the current state.</source>
        <translation>אינכם מנויים על התיקייה &apos;{}&apos;. לכן מנהל הקבצים לא בהכרח מציג את המצב הנוכחי.</translation>
    </message>
    <message>
        <source>You are not subscribed to &apos;{}&apos;.</source>
        <translation>אינכם מנויים על &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>You are subscribed to &apos;{}&apos; already.</source>
        <translation>אתם כבר מנויים על &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>Zolvar is running already for this user.</source>
        <translation>Zolvar כבר פועל עבור משתמש זה.</translation>
    </message>
    <message>
        <source>Zolvar keeps the setting &apos;{}&apos; itself.</source>
        <translation>Zolvar מנהל את ההגדרה &apos;{}&apos; בעצמו.</translation>
    </message>
    <message>
        <source>Zolvar will try to create a folder named &apos;{}&apos; in the folder above.</source>
        <translation>Zolvar ינסה ליצור תיקייה בשם &apos;{}&apos; בתיקייה שלמעלה.</translation>
    </message>
    <message>
        <source>a file has this name</source>
        <translation>לקובץ יש שם זה</translation>
    </message>
    <message>
        <source>a folder lies at this place</source>
        <translation>במקום זה נמצאת תיקייה</translation>
    </message>
    <message>
        <source>a password has at most 500 bytes and no control characters</source>
        <translation>סיסמה היא לכל היותר 500 בתים, ללא תווי בקרה</translation>
    </message>
    <message>
        <source>it does not end</source>
        <translation>הוא אינו מסתיים</translation>
    </message>
    <message>
        <source>it has no place on this disk yet</source>
        <translation>אין לו עדיין מקום בכונן זה</translation>
    </message>
    <message>
        <source>it is no folder</source>
        <translation>זו אינה תיקייה</translation>
    </message>
    <message>
        <source>it is no folder&apos;s path</source>
        <translation>זה אינו נתיב של תיקייה</translation>
    </message>
    <message>
        <source>it is not installed</source>
        <translation>הוא אינו מותקן</translation>
    </message>
    <message>
        <source>it was deactivated</source>
        <translation>ההרשמה אליה בוטלה</translation>
    </message>
    <message>
        <source>it was left</source>
        <translation>היא נעזבה</translation>
    </message>
    <message>
        <source>it was removed</source>
        <translation>הוא הוסר</translation>
    </message>
    <message>
        <source>it was stopped</source>
        <translation>זה נעצר</translation>
    </message>
    <message>
        <source>no log of this folder names it</source>
        <translation>שום יומן של התיקייה אינו מזכיר אותה</translation>
    </message>
    <message>
        <source>no port from {} on is free</source>
        <translation>אין יציאה פנויה החל ב־{}</translation>
    </message>
    <message>
        <source>the file has no such version</source>
        <translation>אין לקובץ גרסה כזו</translation>
    </message>
    <message>
        <source>the folder at this place is another one, or its drive is not mounted</source>
        <translation>התיקייה במקום זה היא אחרת, או שהכונן שלה אינו מחובר</translation>
    </message>
    <message>
        <source>the folder is not accessible</source>
        <translation>התיקייה אינה נגישה</translation>
    </message>
    <message>
        <source>the folder is not active</source>
        <translation>התיקייה אינה פעילה</translation>
    </message>
    <message>
        <source>the folder or our own change log in it is not there</source>
        <translation>התיקייה או יומן השינויים שלנו בה אינם שם</translation>
    </message>
    <message>
        <source>this version is a deletion</source>
        <translation>גרסה זו היא מחיקה</translation>
    </message>
    <message>
        <source>{} address</source>
        <translation>כתובת אחת</translation>
    </message>
    <message>
        <source>{} addresses</source>
        <translation>{} כתובות</translation>
    </message>
    <message>
        <source>{} file</source>
        <translation>קובץ אחד</translation>
    </message>
    <message>
        <source>{} files</source>
        <translation>{} קבצים</translation>
    </message>
    <message>
        <source>{} files have been (re-)moved from Synced Folder &apos;{}&apos; ({}).
Do you want Zolvar to delete them on the network or try to re-get it?</source>
        <translation>קבצים ({0}) הועברו או נמחקו מהתיקייה &apos;{1}&apos;: {2}.
האם Zolvar ימחק אותם בכל הרשת או ינסה להביא אותם מחדש?</translation>
    </message>
    <message>
        <source>{} versions were kept at &apos;{}&apos;; give the id of one of them.</source>
        <translation>{} גרסאות נשמרו ב־&apos;{}&apos;; ציינו את המזהה של אחת מהן.</translation>
    </message>
    <message>
        <source>Shared by others on this network</source>
        <translation>משותפת על ידי אחרים ברשת זו</translation>
    </message>
    <message>
        <source>Progress of the fetch</source>
        <translation>התקדמות ההבאה</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>סינון</translation>
    </message>
    <message>
        <source>Filter folders</source>
        <translation>סינון תיקיות</translation>
    </message>
    <message>
        <source>Folders</source>
        <translation>תיקיות</translation>
    </message>
    <message>
        <source>My Folders</source>
        <translation>התיקיות שלי</translation>
    </message>
    <message>
        <source>On the Network</source>
        <translation>ברשת</translation>
    </message>
    <message>
        <source>%1, %2</source>
        <translation>%1, %2</translation>
    </message>
    <message>
        <source>Show &amp;Details</source>
        <translation>הצגת &amp;פרטים</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Users</source>
        <translation>משתמשים</translation>
    </message>
    <message>
        <source>Missing</source>
        <translation>חסרים</translation>
    </message>
    <message>
        <source>Conflicts</source>
        <translation>התנגשויות</translation>
    </message>
    <message>
        <source>Files vanished from this folder. Shall they come back, or be deleted for everybody?</source>
        <translation>קבצים נעלמו מתיקייה זו. להחזיר אותם, או למחוק אותם אצל כולם?</translation>
    </message>
    <message>
        <source>&amp;Answer…</source>
        <translation>&amp;תשובה…</translation>
    </message>
    <message>
        <source>No folder yet</source>
        <translation>עדיין אין תיקייה</translation>
    </message>
    <message>
        <source>Share a folder of yours, or drag one here. Folders that others share on this network appear by themselves.</source>
        <translation>שתפו תיקייה משלכם, או גררו אחת לכאן. תיקיות שאחרים משתפים ברשת זו מופיעות מעצמן.</translation>
    </message>
    <message>
        <source>No sync was started.</source>
        <translation>לא החל סנכרון.</translation>
    </message>
    <message>
        <source>The folder cannot be paused.</source>
        <translation>אי אפשר להשהות את התיקייה.</translation>
    </message>
    <message>
        <source>Zolvar keeps running</source>
        <translation>Zolvar ממשיך לפעול</translation>
    </message>
    <message>
        <source>Your folders stay in step. The icon in the tray brings the window back and ends the program.</source>
        <translation>התיקיות שלכם נשארות מעודכנות. הסמל במגש מחזיר את החלון ומסיים את התוכנה.</translation>
    </message>
    <message>
        <source>&amp;Share Folder…</source>
        <translation>&amp;שיתוף תיקייה…</translation>
    </message>
    <message>
        <source>Offer a folder to everybody on this network</source>
        <translation>הצעת תיקייה לכולם ברשת זו</translation>
    </message>
    <message>
        <source>&amp;Preferences…</source>
        <translation>&amp;העדפות…</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>&amp;סגירת החלון</translation>
    </message>
    <message>
        <source>&amp;Quit Zolvar</source>
        <translation>&amp;יציאה מ־Zolvar</translation>
    </message>
    <message>
        <source>&amp;Subscribe…</source>
        <translation>&amp;הרשמה…</translation>
    </message>
    <message>
        <source>Have this folder on this computer too, and keep it in step</source>
        <translation>החזקת תיקייה זו גם במחשב זה, ועדכונה</translation>
    </message>
    <message>
        <source>&amp;Unsubscribe</source>
        <translation>&amp;ביטול הרשמה</translation>
    </message>
    <message>
        <source>Take no more part; the folder and its files stay here</source>
        <translation>הפסקת ההשתתפות; התיקייה והקבצים נשארים כאן</translation>
    </message>
    <message>
        <source>&amp;Open</source>
        <translation>&amp;פתיחה</translation>
    </message>
    <message>
        <source>Open the folder in the file browser</source>
        <translation>פתיחת התיקייה במנהל הקבצים</translation>
    </message>
    <message>
        <source>S&amp;ync Now</source>
        <translation>סנכרון &amp;עכשיו</translation>
    </message>
    <message>
        <source>Ask everybody for changes now</source>
        <translation>בקשת שינויים מכולם עכשיו</translation>
    </message>
    <message>
        <source>S&amp;ettings…</source>
        <translation>ה&amp;גדרות…</translation>
    </message>
    <message>
        <source>Password and notices of this folder</source>
        <translation>סיסמה והודעות של תיקייה זו</translation>
    </message>
    <message>
        <source>&amp;Remove…</source>
        <translation>ה&amp;סרה…</translation>
    </message>
    <message>
        <source>Take no more part, and put the folder into the Trash</source>
        <translation>הפסקת ההשתתפות והעברת התיקייה לאשפה</translation>
    </message>
    <message>
        <source>Pause for an &amp;Hour</source>
        <translation>השהיה ל&amp;שעה</translation>
    </message>
    <message>
        <source>&amp;Pause Until Resumed</source>
        <translation>ה&amp;שהיה עד חידוש</translation>
    </message>
    <message>
        <source>Res&amp;ume</source>
        <translation>&amp;חידוש</translation>
    </message>
    <message>
        <source>&amp;Find Folder</source>
        <translation>&amp;חיפוש תיקייה</translation>
    </message>
    <message>
        <source>&amp;Users</source>
        <translation>&amp;משתמשים</translation>
    </message>
    <message>
        <source>&amp;Missing</source>
        <translation>&amp;חסרים</translation>
    </message>
    <message>
        <source>&amp;Conflicts</source>
        <translation>&amp;התנגשויות</translation>
    </message>
    <message>
        <source>Show &amp;Unsubscribed Folders</source>
        <translation>הצגת תיקיות ללא &amp;הרשמה</translation>
    </message>
    <message>
        <source>List the folders that others share as well</source>
        <translation>הצגת התיקיות שאחרים משתפים</translation>
    </message>
    <message>
        <source>&amp;First Steps</source>
        <translation>צעדים &amp;ראשונים</translation>
    </message>
    <message>
        <source>&amp;Release Notes</source>
        <translation>&amp;מה חדש</translation>
    </message>
    <message>
        <source>&amp;About Zolvar</source>
        <translation>&amp;אודות Zolvar</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;קובץ</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;עריכה</translation>
    </message>
    <message>
        <source>F&amp;older</source>
        <translation>&amp;תיקייה</translation>
    </message>
    <message>
        <source>&amp;Versions</source>
        <translation>&amp;גרסאות</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;תצוגה</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;עזרה</translation>
    </message>
    <message>
        <source>Close this message</source>
        <translation>סגירת ההודעה</translation>
    </message>
    <message>
        <source>nobody seen yet</source>
        <translation>עדיין לא נראה אצל איש</translation>
    </message>
    <message>
        <source>%1
Seen at: %2</source>
        <translation>%1
נראה אצל: %2</translation>
    </message>
    <message>
        <source>File</source>
        <translation>קובץ</translation>
    </message>
    <message>
        <source>Seen at</source>
        <translation>נראה אצל</translation>
    </message>
    <message>
        <source>Missing files</source>
        <translation>קבצים חסרים</translation>
    </message>
    <message>
        <source>&amp;Fetch Now</source>
        <translation>הבאה &amp;עכשיו</translation>
    </message>
    <message>
        <source>Ask everybody for the missing files now</source>
        <translation>בקשת הקבצים החסרים מכולם עכשיו</translation>
    </message>
    <message>
        <source>&amp;Delete Everywhere…</source>
        <translation>מחיקה &amp;בכל מקום…</translation>
    </message>
    <message>
        <source>Give the selected files up, here and at everybody</source>
        <translation>ויתור על הקבצים שנבחרו, כאן ואצל כולם</translation>
    </message>
    <message>
        <source>Nothing is missing</source>
        <translation>דבר לא חסר</translation>
    </message>
    <message>
        <source>Every file that the others have told of is here.</source>
        <translation>כל קובץ שהאחרים סיפרו עליו נמצא כאן.</translation>
    </message>
    <message>
        <source>The files cannot be deleted.</source>
        <translation>אי אפשר למחוק את הקבצים.</translation>
    </message>
    <message>
        <source>not yet</source>
        <translation>עדיין לא</translation>
    </message>
    <message>
        <source>This user&apos;s folder has a password.</source>
        <translation>לתיקייה של משתמש זה יש סיסמה.</translation>
    </message>
    <message>
        <source>%1, with password</source>
        <translation>%1, עם סיסמה</translation>
    </message>
    <message>
        <source>User</source>
        <translation>משתמש</translation>
    </message>
    <message>
        <source>Computer</source>
        <translation>מחשב</translation>
    </message>
    <message>
        <source>Last sync</source>
        <translation>סנכרון אחרון</translation>
    </message>
    <message>
        <source>Contact</source>
        <translation>קשר</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>אישור</translation>
    </message>
    <message>
        <source>The folder cannot be shared.</source>
        <translation>אי אפשר לשתף את התיקייה.</translation>
    </message>
    <message>
        <source>Subscribing failed.</source>
        <translation>ההרשמה נכשלה.</translation>
    </message>
    <message>
        <source>Unsubscribing failed.</source>
        <translation>ביטול ההרשמה נכשל.</translation>
    </message>
    <message>
        <source>Removing failed.</source>
        <translation>ההסרה נכשלה.</translation>
    </message>
    <message>
        <source>Use this version?</source>
        <translation>להשתמש בגרסה זו?</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>בהשהיה</translation>
    </message>
    <message>
        <source>Paused until %1</source>
        <translation>בהשהיה עד %1</translation>
    </message>
    <message>
        <source>Not subscribed</source>
        <translation>ללא הרשמה</translation>
    </message>
    <message>
        <source>Waiting for the drive</source>
        <translation>ממתינה לכונן</translation>
    </message>
    <message>
        <source>Waiting for the password</source>
        <translation>ממתינה לסיסמה</translation>
    </message>
    <message>
        <source>Waiting for the clock</source>
        <translation>ממתינה לשעון</translation>
    </message>
    <message>
        <source>A question is open</source>
        <translation>יש שאלה פתוחה</translation>
    </message>
    <message numerus="yes">
        <source>Conflict in %n file(s)</source>
        <translation>
            <numerusform>התנגשות בקובץ אחד</numerusform>
            <numerusform>התנגשות ב־%n קבצים</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Fetching %n file(s)</source>
        <translation>
            <numerusform>מביאה קובץ אחד</numerusform>
            <numerusform>מביאה %n קבצים</numerusform>
        </translation>
    </message>
    <message>
        <source>Fetching %1 of %2</source>
        <translation>מביאה %1 מתוך %2</translation>
    </message>
    <message numerus="yes">
        <source>%n file(s) missing</source>
        <translation>
            <numerusform>קובץ אחד חסר</numerusform>
            <numerusform>%n קבצים חסרים</numerusform>
        </translation>
    </message>
    <message>
        <source>Nobody else is here</source>
        <translation>אין כאן איש מלבדכם</translation>
    </message>
    <message>
        <source>Checking</source>
        <translation>בבדיקה</translation>
    </message>
    <message>
        <source>In step</source>
        <translation>מעודכנת</translation>
    </message>
    <message>
        <source>Subscribe, and its files come to this computer and stay in step.</source>
        <translation>הירשמו, והקבצים יגיעו למחשב זה ויישארו מעודכנים.</translation>
    </message>
    <message>
        <source>Nothing is fetched or sent. Changes here are noted and travel later.</source>
        <translation>דבר אינו מובא או נשלח. שינויים כאן נרשמים ויגיעו מאוחר יותר.</translation>
    </message>
    <message>
        <source>The folder cannot be reached. Nothing happens until it is back.</source>
        <translation>אי אפשר להגיע לתיקייה. דבר לא קורה עד שתחזור.</translation>
    </message>
    <message>
        <source>Nobody here has the same password for this folder.</source>
        <translation>לאיש כאן אין אותה סיסמה לתיקייה זו.</translation>
    </message>
    <message>
        <source>This computer&apos;s clock is off. Set it, and the folder goes on.</source>
        <translation>שעון המחשב אינו מדויק. כוונו אותו, והתיקייה תמשיך.</translation>
    </message>
    <message>
        <source>Nothing is deleted for the others before you answer.</source>
        <translation>דבר לא יימחק אצל האחרים לפני שתענו.</translation>
    </message>
    <message>
        <source>Two people changed a file at once. Both versions are kept; choose one.</source>
        <translation>שניים שינו קובץ בו־זמנית. שתי הגרסאות נשמרו; בחרו אחת.</translation>
    </message>
    <message>
        <source>Nobody who is here now has them. They come once somebody who has them is back.</source>
        <translation>לאיש מהנמצאים כאן אין אותם. הם יגיעו כשיהיה כאן מי שמחזיק בהם.</translation>
    </message>
    <message>
        <source>Changes reach the others as soon as they are on the network.</source>
        <translation>השינויים יגיעו לאחרים ברגע שיהיו ברשת.</translation>
    </message>
    <message numerus="yes">
        <source>%n user(s)</source>
        <translation>
            <numerusform>משתמש אחד</numerusform>
            <numerusform>%n משתמשים</numerusform>
        </translation>
    </message>
    <message>
        <source>Not on the network</source>
        <translation>לא ברשת</translation>
    </message>
    <message numerus="yes">
        <source>In step with %n user(s)</source>
        <translation>
            <numerusform>מעודכנת עם משתמש אחד</numerusform>
            <numerusform>מעודכנת עם %n משתמשים</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n missing</source>
        <translation>
            <numerusform>אחד חסר</numerusform>
            <numerusform>%n חסרים</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %n file(s)</source>
        <translation>
            <numerusform>%1 מתוך קובץ אחד</numerusform>
            <numerusform>%1 מתוך %n קבצים</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 מתוך %2</translation>
    </message>
    <message>
        <source>%1/s</source>
        <translation>%1/שנ׳</translation>
    </message>
    <message>
        <source>Ignored</source>
        <translation>בהתעלמות</translation>
    </message>
    <message>
        <source>Has another password</source>
        <translation>סיסמה שונה</translation>
    </message>
    <message>
        <source>Seen</source>
        <translation>נראה</translation>
    </message>
    <message>
        <source>Connected</source>
        <translation>מחובר</translation>
    </message>
    <message>
        <source>just now</source>
        <translation>ממש עכשיו</translation>
    </message>
    <message numerus="yes">
        <source>%n minute(s) ago</source>
        <translation>
            <numerusform>לפני דקה</numerusform>
            <numerusform>לפני %n דקות</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n hour(s) ago</source>
        <translation>
            <numerusform>לפני שעה</numerusform>
            <numerusform>לפני %n שעות</numerusform>
        </translation>
    </message>
    <message>
        <source>yesterday, %1</source>
        <translation>אתמול, %1</translation>
    </message>
    <message>
        <source>less than a minute left</source>
        <translation>נותרה פחות מדקה</translation>
    </message>
    <message numerus="yes">
        <source>about %n minute(s) left</source>
        <translation>
            <numerusform>נותרה כדקה</numerusform>
            <numerusform>נותרו כ־%n דקות</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>about %n hour(s) left</source>
        <translation>
            <numerusform>נותרה כשעה</numerusform>
            <numerusform>נותרו כ־%n שעות</numerusform>
        </translation>
    </message>
    <message>
        <source>Zolvar: no folder yet</source>
        <translation>Zolvar: עדיין אין תיקייה</translation>
    </message>
    <message>
        <source>Zolvar: everything is in step</source>
        <translation>Zolvar: הכול מעודכן</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>&amp;Open Zolvar</source>
        <translation>&amp;פתיחת Zolvar</translation>
    </message>
    <message>
        <source>&amp;Resume</source>
        <translation>&amp;חידוש</translation>
    </message>
    <message>
        <source>&amp;Resume (paused until %1)</source>
        <translation>&amp;חידוש (בהשהיה עד %1)</translation>
    </message>
    <message>
        <source>&amp;Pause</source>
        <translation>ה&amp;שהיה</translation>
    </message>
    <message>
        <source>For an &amp;Hour</source>
        <translation>ל&amp;שעה</translation>
    </message>
    <message>
        <source>Until &amp;Resumed</source>
        <translation>&amp;עד חידוש</translation>
    </message>
    <message>
        <source>S&amp;ync With</source>
        <translation>&amp;סנכרון עם</translation>
    </message>
    <message>
        <source>Fetch this user&apos;s changes now</source>
        <translation>הבאת השינויים של משתמש זה עכשיו</translation>
    </message>
    <message>
        <source>&amp;Ignore</source>
        <translation>ה&amp;תעלמות</translation>
    </message>
    <message>
        <source>Say no more about this user&apos;s different password</source>
        <translation>לא לדווח עוד על הסיסמה השונה של משתמש זה</translation>
    </message>
    <message>
        <source>Whoever runs Zolvar on this network sees “%1” in the list and can subscribe to it.</source>
        <translation>כל מי שמפעיל את Zolvar ברשת זו רואה את „%1” ברשימה ויכול להירשם.</translation>
    </message>
    <message>
        <source>Stop &amp;Ignoring</source>
        <translation>הפסקת ה&amp;תעלמות</translation>
    </message>
    <message>
        <source>The user cannot be ignored.</source>
        <translation>אי אפשר להתעלם מהמשתמש.</translation>
    </message>
    <message>
        <source>Fetching the version from %1…</source>
        <translation>מביא את הגרסה של %1…</translation>
    </message>
    <message>
        <source>The version could not be fetched.</source>
        <translation>לא ניתן היה להביא את הגרסה.</translation>
    </message>
    <message>
        <source>Version tree</source>
        <translation>עץ הגרסאות</translation>
    </message>
    <message>
        <source>deleted it, %1</source>
        <translation>מחיקה, %1</translation>
    </message>
    <message>
        <source>added it, %1</source>
        <translation>הוספה, %1</translation>
    </message>
    <message>
        <source>changed it, %1</source>
        <translation>שינוי, %1</translation>
    </message>
    <message>
        <source>%1 %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Logged %1</source>
        <translation>נרשם %1</translation>
    </message>
    <message>
        <source>Size %1</source>
        <translation>גודל %1</translation>
    </message>
    <message>
        <source>This one is here.</source>
        <translation>זו שכאן.</translation>
    </message>
    <message>
        <source>Chosen by %1</source>
        <translation>נבחר על ידי %1</translation>
    </message>
    <message>
        <source>A current version: it can be used instead of the one here.</source>
        <translation>גרסה נוכחית: אפשר להשתמש בה במקום זו שכאן.</translation>
    </message>
    <message>
        <source>An earlier version: somebody went on from it.</source>
        <translation>גרסה קודמת: מישהו המשיך ממנה.</translation>
    </message>
    <message>
        <source>here</source>
        <translation>כאן</translation>
    </message>
    <message>
        <source>chosen by %1</source>
        <translation>נבחר על ידי %1</translation>
    </message>
    <message>
        <source>Deleted {} in &apos;{}&apos;:</source>
        <translation>נמחקו {} ב־&apos;{}&apos;:</translation>
    </message>
    <message>
        <source>Error syncing folder &apos;{}&apos; with {} while {}: {}</source>
        <translation>שגיאה בסנכרון התיקייה &apos;{0}&apos; עם {1} ({2}): {3}</translation>
    </message>
    <message>
        <source>Its name differs from &apos;{}&apos; in case or blanks only, and both cannot be served.</source>
        <translation>שמה שונה מ־&apos;{}&apos; רק באותיות רישיות או ברווחים, ואי אפשר להציע את שתיהן.</translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation>הצגה במנהל הקבצים</translation>
    </message>
    <message>
        <source>The folder &apos;{}&apos; is not shared: {}</source>
        <translation>התיקייה &apos;{}&apos; אינה משותפת: {}</translation>
    </message>
    <message>
        <source>Trashed {} in &apos;{}&apos;:</source>
        <translation>הועברו לאשפה {} ב־&apos;{}&apos;:</translation>
    </message>
    <message>
        <source>another process holds it</source>
        <translation>תהליך אחר מחזיק בו</translation>
    </message>
    <message>
        <source>it is no file and no link</source>
        <translation>זה אינו קובץ ואינו קישור</translation>
    </message>
    <message>
        <source>it is no regular file</source>
        <translation>זה אינו קובץ רגיל</translation>
    </message>
    <message>
        <source>the file here was changed a moment ago; try again when that change is recorded</source>
        <translation>הקובץ כאן שונה לפני רגע; נסו שוב כשהשינוי יירשם</translation>
    </message>
    <message>
        <source>the keyring is locked</source>
        <translation>מחזיק המפתחות נעול</translation>
    </message>
    <message>
        <source>this version is chosen already</source>
        <translation>גרסה זו כבר נבחרה</translation>
    </message>
    <message>
        <source>this version is dated so far in the future that nothing can follow it</source>
        <translation>תאריך הגרסה רחוק כל כך בעתיד ששום דבר אינו יכול לבוא אחריה</translation>
    </message>
    <message>
        <source>this version is not a current one: it was changed or deleted since</source>
        <translation>גרסה זו אינה נוכחית: היא שונתה או נמחקה מאז</translation>
    </message>
    <message>
        <source>&apos;{0}&apos; is paused. Resume it with: zolvar resume &apos;{0}&apos;</source>
        <translation>&apos;{0}&apos; בהשהיה. לחידוש: zolvar resume &apos;{0}&apos;</translation>
    </message>
    <message>
        <source>authentication failed</source>
        <translation>האימות נכשל</translation>
    </message>
    <message>
        <source>error in rsync protocol data stream</source>
        <translation>שגיאה בזרם הנתונים של rsync</translation>
    </message>
    <message>
        <source>loading changes</source>
        <translation>טעינת שינויים</translation>
    </message>
    <message>
        <source>socket connection failed.</source>
        <translation>החיבור נכשל.</translation>
    </message>
    <message>
        <source>some files could not be transferred</source>
        <translation>חלק מהקבצים לא הועברו</translation>
    </message>
    <message>
        <source>Could not empty &apos;{}&apos;</source>
        <translation>לא ניתן היה לרוקן את &apos;{}&apos;</translation>
    </message>
    <message>
        <source>The folder &apos;{}&apos; cannot be shared.</source>
        <translation>אי אפשר לשתף את התיקייה &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>There is no setting &apos;{}&apos;.</source>
        <translation>אין הגדרה &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>it is not ready yet; try again when it has been looked through</source>
        <translation>היא עדיין אינה מוכנה; נסו שוב אחרי שתיסרק</translation>
    </message>
    <message>
        <source>it is not where it lay; mount its drive, or bring it back</source>
        <translation>היא אינה במקומה; חברו את הכונן שלה, או החזירו אותה</translation>
    </message>
    <message>
        <source>About Zolvar</source>
        <translation>אודות Zolvar</translation>
    </message>
    <message>
        <source>Keeps folders in step between the computers of one local network, with no server and no account.</source>
        <translation>מעדכן תיקיות בין המחשבים של רשת מקומית אחת, ללא שרת וללא חשבון.</translation>
    </message>
    <message>
        <source>Version:</source>
        <translation>גרסה:</translation>
    </message>
    <message>
        <source>You are:</source>
        <translation>אתם:</translation>
    </message>
    <message>
        <source>Reached at port:</source>
        <translation>נגיש ביציאה:</translation>
    </message>
    <message>
        <source>nobody reaches you now</source>
        <translation>איש אינו מגיע אליכם כעת</translation>
    </message>
    <message>
        <source>License:</source>
        <translation>רישיון:</translation>
    </message>
    <message>
        <source>GNU General Public License, version 3. It comes without any warranty.</source>
        <translation>GNU General Public License, גרסה 3. ללא כל אחריות.</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>סגירה</translation>
    </message>
    <message>
        <source>About &amp;Qt</source>
        <translation>אודות &amp;Qt</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>יחידה</translation>
    </message>
    <message>
        <source>&amp;Later</source>
        <translation>&amp;אחר כך</translation>
    </message>
    <message>
        <source>The &amp;files:</source>
        <translation>ה&amp;קבצים:</translation>
    </message>
    <message>
        <source>Re-Get brings the files back here from the others. Delete Everywhere moves them to the Trash of everybody who has them.</source>
        <translation>״הבאה מחדש״ מחזירה את הקבצים לכאן מהאחרים. ״מחיקה בכל מקום״ מעבירה אותם לאשפה אצל כל מי שמחזיק בהם.</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>תיקייה</translation>
    </message>
    <message>
        <source>&amp;Choose…</source>
        <translation>&amp;בחירה…</translation>
    </message>
    <message>
        <source>Choose the folder</source>
        <translation>בחירת התיקייה</translation>
    </message>
    <message>
        <source>Select Folder</source>
        <translation>בחירת תיקייה</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>סיסמה</translation>
    </message>
    <message>
        <source>Show the password</source>
        <translation>הצגת הסיסמה</translation>
    </message>
    <message>
        <source>Preferences</source>
        <translation>העדפות</translation>
    </message>
    <message>
        <source>&amp;General</source>
        <translation>&amp;כללי</translation>
    </message>
    <message>
        <source>&amp;Transfers</source>
        <translation>ה&amp;עברה</translation>
    </message>
    <message>
        <source>&amp;Notices</source>
        <translation>הו&amp;דעות</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;שמירה</translation>
    </message>
    <message>
        <source>Same as the system</source>
        <translation>כמו המערכת</translation>
    </message>
    <message>
        <source>Start Zolvar at &amp;login</source>
        <translation>הפעלת Zolvar עם ה&amp;כניסה</translation>
    </message>
    <message>
        <source>&amp;Keep folders in step by themselves</source>
        <translation>עדכון תיקיות &amp;מעצמן</translation>
    </message>
    <message>
        <source>&amp;Quick pace</source>
        <translation>קצב &amp;מהיר</translation>
    </message>
    <message>
        <source>L&amp;anguage:</source>
        <translation>&amp;שפה:</translation>
    </message>
    <message>
        <source>While this is off, all folders are paused: nothing is fetched, and nothing is given to others.</source>
        <translation>כשזה כבוי, כל התיקיות בהשהיה: דבר אינו מובא, ודבר אינו ניתן לאחרים.</translation>
    </message>
    <message>
        <source>Changes travel within seconds instead of a minute or two, for a little more work. Takes effect at the next start.</source>
        <translation>שינויים מגיעים תוך שניות במקום דקה או שתיים, במעט יותר עבודה. ייכנס לתוקף בהפעלה הבאה.</translation>
    </message>
    <message>
        <source>KB/s</source>
        <translation>KB/s</translation>
    </message>
    <message>
        <source>MB/s</source>
        <translation>MB/s</translation>
    </message>
    <message>
        <source>No limit</source>
        <translation>ללא הגבלה</translation>
    </message>
    <message>
        <source>Most that is sent</source>
        <translation>המרב שנשלח</translation>
    </message>
    <message>
        <source>Most that is fetched</source>
        <translation>המרב שמובא</translation>
    </message>
    <message>
        <source>Keep nothing</source>
        <translation>לא לשמור דבר</translation>
    </message>
    <message>
        <source> days</source>
        <translation> ימים</translation>
    </message>
    <message>
        <source>Most that is kept</source>
        <translation>המרב שנשמר</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>MB</translation>
    </message>
    <message>
        <source>GB</source>
        <translation>GB</translation>
    </message>
    <message>
        <source>&amp;Send at most:</source>
        <translation>&amp;שליחה לכל היותר:</translation>
    </message>
    <message>
        <source>&amp;Fetch at most:</source>
        <translation>&amp;הבאה לכל היותר:</translation>
    </message>
    <message>
        <source>For each user who fetches or is fetched from.</source>
        <translation>לכל משתמש שמביא או שמביאים ממנו.</translation>
    </message>
    <message>
        <source>Keep &amp;versions for:</source>
        <translation>שמירת &amp;גרסאות למשך:</translation>
    </message>
    <message>
        <source>For each folder at &amp;most:</source>
        <translation>לכל תיקייה לכל ה&amp;יותר:</translation>
    </message>
    <message>
        <source>What others&apos; changes replace in your folders is kept so that you can have it back.</source>
        <translation>מה ששינויים של אחרים מחליפים בתיקיות שלכם נשמר כדי שתוכלו להחזיר אותו.</translation>
    </message>
    <message>
        <source>Show all &amp;warnings again</source>
        <translation>הצגת כל ה&amp;אזהרות מחדש</translation>
    </message>
    <message>
        <source>Show notices about these &amp;folders:</source>
        <translation>הצגת הודעות על &amp;תיקיות אלה:</translation>
    </message>
    <message>
        <source>Conflicts are shown either way.</source>
        <translation>על התנגשויות מודיעים בכל מקרה.</translation>
    </message>
    <message>
        <source>Do &amp;not ask again</source>
        <translation>לא ל&amp;שאול שוב</translation>
    </message>
    <message>
        <source>First Steps</source>
        <translation>צעדים ראשונים</translation>
    </message>
    <message>
        <source>Folders in step, in three steps</source>
        <translation>תיקיות מעודכנות, בשלושה צעדים</translation>
    </message>
    <message>
        <source>Share</source>
        <translation>שיתוף</translation>
    </message>
    <message>
        <source>Choose a folder, or drag it onto the window. Everybody on this network who runs Zolvar sees it by its name.</source>
        <translation>בחרו תיקייה, או גררו אותה אל החלון. כל מי שמפעיל את Zolvar ברשת זו רואה אותה בשמה.</translation>
    </message>
    <message>
        <source>Subscribe</source>
        <translation>הרשמה</translation>
    </message>
    <message>
        <source>On the other computers, select the folder in the list and subscribe to it. Its files arrive.</source>
        <translation>במחשבים האחרים, בחרו את התיקייה ברשימה והירשמו. הקבצים מגיעים.</translation>
    </message>
    <message>
        <source>Work together</source>
        <translation>עבודה משותפת</translation>
    </message>
    <message>
        <source>Everybody&apos;s changes travel by themselves. When two people change one file at once, both versions are kept and you choose.</source>
        <translation>השינויים של כולם עוברים מעצמם. כששניים משנים קובץ אחד בו־זמנית, שתי הגרסאות נשמרות ואתם בוחרים.</translation>
    </message>
    <message>
        <source>%1. %2</source>
        <translation>%1. %2</translation>
    </message>
    <message>
        <source>&amp;Share a Folder…</source>
        <translation>&amp;שיתוף תיקייה…</translation>
    </message>
    <message>
        <source>The window shows every folder, who has it, what is missing and what conflicts, and settles conflicts for several files at once. A choice can be undone.</source>
        <translation>החלון מציג כל תיקייה, מי מחזיק בה, מה חסר ומה מתנגש, ומיישב התנגשויות של כמה קבצים יחד. אפשר לבטל בחירה.</translation>
    </message>
    <message>
        <source>The version tree draws who changed a file, when, and from which version.</source>
        <translation>עץ הגרסאות מצייר מי שינה קובץ, מתי, ומאיזו גרסה.</translation>
    </message>
    <message>
        <source>Folders can be paused for an hour or until you resume them.</source>
        <translation>אפשר להשהות תיקיות לשעה או עד חידוש.</translation>
    </message>
    <message>
        <source>What others&apos; changes replace in your folders is kept for a month, so that you can have it back.</source>
        <translation>מה ששינויים של אחרים מחליפים בתיקיות שלכם נשמר חודש, כדי שתוכלו להחזיר אותו.</translation>
    </message>
    <message>
        <source>A file .zolvarignore at the top of a folder names what stays out of it.</source>
        <translation>קובץ ‎.zolvarignore בראש תיקייה מציין מה נשאר מחוץ לה.</translation>
    </message>
    <message>
        <source>Release Notes</source>
        <translation>מה חדש</translation>
    </message>
    <message>
        <source>New in Zolvar %1</source>
        <translation>מה חדש ב־Zolvar %1</translation>
    </message>
    <message>
        <source>Folder Settings</source>
        <translation>הגדרות תיקייה</translation>
    </message>
    <message>
        <source>Settings of &apos;%1&apos;</source>
        <translation>ההגדרות של &apos;%1&apos;</translation>
    </message>
    <message>
        <source>It has no folder on this computer.</source>
        <translation>אין לה תיקייה במחשב זה.</translation>
    </message>
    <message>
        <source>&amp;Password:</source>
        <translation>&amp;סיסמה:</translation>
    </message>
    <message>
        <source>The folder has a password</source>
        <translation>לתיקייה יש סיסמה</translation>
    </message>
    <message>
        <source>Unchanged</source>
        <translation>ללא שינוי</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>סיסמה חדשה</translation>
    </message>
    <message>
        <source>Show &amp;notices about this folder</source>
        <translation>הצגת הו&amp;דעות על תיקייה זו</translation>
    </message>
    <message>
        <source>The keyring does not give the password. Unlock it, or type the password again.</source>
        <translation>מחזיק המפתחות אינו מוסר את הסיסמה. פתחו אותו, או הקלידו את הסיסמה שוב.</translation>
    </message>
    <message>
        <source>Everybody on the network can have the files then.</source>
        <translation>כולם ברשת יוכלו לקבל את הקבצים.</translation>
    </message>
    <message>
        <source>Each user sets the password on the own computer. Files travel between those who have the same one.</source>
        <translation>כל משתמש קובע את הסיסמה במחשבו. קבצים עוברים בין מי שיש להם אותה סיסמה.</translation>
    </message>
    <message>
        <source>The settings could not be saved.</source>
        <translation>לא ניתן היה לשמור את ההגדרות.</translation>
    </message>
    <message>
        <source>Share Folder</source>
        <translation>שיתוף תיקייה</translation>
    </message>
    <message>
        <source>Share a folder</source>
        <translation>שיתוף תיקייה</translation>
    </message>
    <message>
        <source>Everybody on this network who runs Zolvar sees it by its name and can subscribe to it. The files stay where they are.</source>
        <translation>כל מי שמפעיל את Zolvar ברשת זו רואה אותה בשמה ויכול להירשם. הקבצים נשארים במקומם.</translation>
    </message>
    <message>
        <source>None: everybody can subscribe</source>
        <translation>ללא: כולם יכולים להירשם</translation>
    </message>
    <message>
        <source>Whoever enters the same password gets the files.</source>
        <translation>מי שנותן אותה סיסמה מקבל את הקבצים.</translation>
    </message>
    <message>
        <source>&amp;Folder:</source>
        <translation>&amp;תיקייה:</translation>
    </message>
    <message>
        <source>&amp;Share</source>
        <translation>&amp;שיתוף</translation>
    </message>
    <message>
        <source>Subscribe to &apos;%1&apos;</source>
        <translation>הרשמה אל &apos;%1&apos;</translation>
    </message>
    <message>
        <source>Required</source>
        <translation>נדרשת</translation>
    </message>
    <message>
        <source>None</source>
        <translation>ללא</translation>
    </message>
    <message>
        <source>Ask the others for it: files come from those who have the same one.</source>
        <translation>שאלו את האחרים: קבצים מגיעים ממי שיש לו אותה סיסמה.</translation>
    </message>
    <message>
        <source>&amp;Subscribe</source>
        <translation>&amp;הרשמה</translation>
    </message>
    <message numerus="yes">
        <source>Shared by %n user(s).</source>
        <translation>
            <numerusform>משותפת על ידי משתמש אחד.</numerusform>
            <numerusform>משותפת על ידי %n משתמשים.</numerusform>
        </translation>
    </message>
    <message>
        <source>Shared by %1.</source>
        <translation>משותפת על ידי %1.</translation>
    </message>
    <message>
        <source>The files arrive in a folder on this computer and stay in step.</source>
        <translation>הקבצים מגיעים לתיקייה במחשב זה ונשארים מעודכנים.</translation>
    </message>
    <message>
        <source>The folder is not there.</source>
        <translation>התיקייה אינה כאן.</translation>
    </message>
    <message>
        <source>Its drive is not connected. Connect it, and try again.</source>
        <translation>הכונן שלה אינו מחובר. חברו אותו ונסו שוב.</translation>
    </message>
    <message>
        <source>Unsubscribe from &apos;%1&apos;?</source>
        <translation>לבטל את ההרשמה אל &apos;%1&apos;?</translation>
    </message>
    <message>
        <source>The files stay on this computer, but changes no longer come here or go to the others. You can subscribe again at any time.</source>
        <translation>הקבצים נשארים במחשב זה, אך שינויים לא יגיעו לכאן ולא יעברו לאחרים. תוכלו להירשם שוב בכל עת.</translation>
    </message>
    <message>
        <source>Remove &apos;%1&apos;?</source>
        <translation>להסיר את &apos;%1&apos;?</translation>
    </message>
    <message>
        <source>&amp;Move to Trash</source>
        <translation>ה&amp;עברה לאשפה</translation>
    </message>
    <message>
        <source>There is no address book.</source>
        <translation>אין ספר כתובות.</translation>
    </message>
    <message>
        <source>There is no group named &apos;{}&apos; in the address book.</source>
        <translation>אין בספר הכתובות קבוצה בשם &apos;{}&apos;.</translation>
    </message>
    <message>
        <source>There is no group named &apos;{}&apos; in the address book. There are: {}.</source>
        <translation>אין בספר הכתובות קבוצה בשם &apos;{}&apos;. יש: {}.</translation>
    </message>
    <message>
        <source>You are not subscribed to any folder yet.</source>
        <translation>עדיין אינכם מנויים על אף תיקייה.</translation>
    </message>
    <message>
        <source>Changed in two places at once. Nothing is lost: every version is kept until you choose.</source>
        <translation>שונו בשני מקומות בו־זמנית. דבר לא אבד: כל גרסה נשמרת עד שתבחרו.</translation>
    </message>
    <message>
        <source>Share C&amp;ontacts…</source>
        <translation>שיתוף &amp;אנשי קשר…</translation>
    </message>
    <message>
        <source>Offer a group of the address book to everybody here</source>
        <translation>הצעת קבוצה מספר הכתובות לכולם כאן</translation>
    </message>
    <message>
        <source>Share Contacts</source>
        <translation>שיתוף אנשי קשר</translation>
    </message>
    <message>
        <source>Share a group of contacts</source>
        <translation>שיתוף קבוצת אנשי קשר</translation>
    </message>
    <message>
        <source>Who subscribes to it has these contacts in the own address book, and changes travel both ways. Notes stay where they are.</source>
        <translation>מי שנרשם מקבל את אנשי הקשר בספר הכתובות שלו, ושינויים עוברים בשני הכיוונים. הערות נשארות במקומן.</translation>
    </message>
    <message>
        <source>&amp;Group:</source>
        <translation>&amp;קבוצה:</translation>
    </message>
    <message>
        <source>There are no groups in the address book.</source>
        <translation>אין קבוצות בספר הכתובות.</translation>
    </message>
    <message>
        <source>The contacts cannot be shared.</source>
        <translation>אי אפשר לשתף את אנשי הקשר.</translation>
    </message>
    <message>
        <source>a folder with files in it lies there; move these away first</source>
        <translation>נמצאת שם תיקייה עם קבצים; העבירו אותם תחילה למקום אחר</translation>
    </message>
    <message>
        <source>Others have contacts whose names are like those of people in your address book ({}). Click to open them there, and merge those that are the same.</source>
        <translation>אצל אחרים יש אנשי קשר ששמותיהם דומים לשמות בספר הכתובות שלכם ({}). לחצו כדי לפתוח אותם שם, ומזגו את הזהים.</translation>
    </message>
    <message>
        <source>Merge Contacts in &apos;{}&apos;?</source>
        <translation>למזג אנשי קשר ב־&apos;{}&apos;?</translation>
    </message>
    <message>
        <source>a file could not be read or written; perhaps a disk is full, or its drive gone</source>
        <translation>אי אפשר היה לקרוא או לכתוב קובץ; ייתכן שהדיסק מלא או שהכונן נותק</translation>
    </message>
    <message>
        <source>a folder or file could not be opened</source>
        <translation>אי אפשר היה לפתוח תיקייה או קובץ</translation>
    </message>
    <message>
        <source>nothing came for too long</source>
        <translation>דבר לא הגיע זמן רב מדי</translation>
    </message>
    <message>
        <source>some files vanished over there before they could be fetched</source>
        <translation>כמה קבצים נעלמו שם לפני שהספיקו להגיע</translation>
    </message>
    <message>
        <source>the other computer did not answer in time</source>
        <translation>המחשב האחר לא ענה בזמן</translation>
    </message>
    <message>
        <source>the transfer tool ended with status {}</source>
        <translation>כלי ההעברה הסתיים במצב {}</translation>
    </message>
    <message>
        <source>the transfer tool was ended by signal {}</source>
        <translation>כלי ההעברה נעצר על ידי אות {}</translation>
    </message>
    <message>
        <source>the transfer tools of the two computers do not understand each other</source>
        <translation>כלי ההעברה של שני המחשבים אינם מבינים זה את זה</translation>
    </message>
    <message>
        <source>the transfer was ended</source>
        <translation>ההעברה הופסקה</translation>
    </message>
    <message>
        <source>there was not enough memory</source>
        <translation>לא היה די זיכרון</translation>
    </message>
    <message>
        <source>Something is in the way</source>
        <translation>משהו מפריע</translation>
    </message>
    <message>
        <source>Last sync failed</source>
        <translation>הסנכרון האחרון נכשל</translation>
    </message>
    <message>
        <source>Nobody can fetch from this computer. %1</source>
        <translation>איש אינו יכול להביא ממחשב זה. %1</translation>
    </message>
    <message>
        <source>another file was put there meanwhile</source>
        <translation>בינתיים הונח שם קובץ אחר</translation>
    </message>
</context>
</TS>
