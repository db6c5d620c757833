' Drives a module as a script host does: late bound, by name, results written into variables.
' usage: cscript //nologo automation.vbs GENERATOR BITMAP
' A script host may say nothing of an error and exit with 0, so every result is printed, and that the end was reached.
Option Explicit
On Error Resume Next

Dim generator, lcd, status, text, tries, rate, line, inverted, key, toggle
Dim upSideDown, invertedDisplay, frame, lcdOn, automaticBacklight
generator = WScript.Arguments(0)

Sub Report(what)
    WScript.Echo what & ": status " & status & " (" & TypeName(status) & "), error " & Err.Number
    If Err.Number = 53 Then WScript.Echo "    from " & Err.Source & ", a text: " & (Len(Err.Description) > 0)
    Err.Clear
    status = 7
End Sub

status = 7
Set lcd = CreateObject("OPaneCommDLL.clsOPaneCommDLL")
Report "create"
lcd.Version text
WScript.Echo text
rate = "9600"
For tries = 1 To 5  ' the module has 100 ms to answer, which a busy machine may take for itself
    lcd.Synchronize 1, rate, 3, status
    If status = 0 Then Exit For
Next
Report "Synchronize"
lcd.DisplayBMP WScript.Arguments(1), status
Report "DisplayBMP"
lcd.DisplayString "Late bound", 4, 1, 3, 0, generator, status
Report "DisplayString"
line = 6
inverted = True
inverted = -inverted
lcd.DisplayString "from a script", line, 2, 1, inverted, generator, status
Report "DisplayString inverted"

lcd.ReadStatus upSideDown, invertedDisplay, frame, lcdOn, automaticBacklight, status
WScript.Echo "flags " & upSideDown & invertedDisplay & frame & lcdOn & automaticBacklight
Report "ReadStatus"
lcd.ReadIRLastKey key, toggle, status
WScript.Echo "key " & key & ", toggle " & toggle
Report "ReadIRLastKey"

lcd.DisplayBMP "no such file.bmp", status
Report "a missing bitmap"
lcd.DisplayString "x", "first", 0, 0, 0, generator, status
Report "a line that is no number"
lcd.Synchronise 1, 9600, 3, status
Report "a method that there is not"
Set lcd = Nothing
WScript.Echo "end"
