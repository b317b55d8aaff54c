{ The Free Pascal side of the object stream interoperability tests.

  fpconv b2t|t2b|r2t|t2r IN OUT   converts every object of IN with the Classes unit's
                                  ObjectBinaryToText, ObjectTextToBinary, ObjectResourceToText
                                  or ObjectTextToResource.
  fpconv dump IN OUT              lists every value of the binary objects in IN as read by the
                                  Classes unit's binary reader, one line each (floats and
                                  strings as the hexadecimal bytes of the value read).
  fpconv gen OUT                  writes a component tree with the Classes unit's TWriter.
  fpconv reread IN OUT            reads the component stream IN into TPasWidget components
                                  with the Classes unit's TReader and writes them again. }
program fpconv;

{$mode objfpc}{$H+}

uses
  Classes, SysUtils, TypInfo, Variants;

type
  TTone = (tnRed, tnGreen, tnBlue, tnWhite);
  TTones = set of TTone;

  TPasLook = class(TPersistent)
  private
    FSize: Integer;
    FName: string;
    FTones: TTones;
  published
    property Size: Integer read FSize write FSize default 8;
    property Name: string read FName write FName;
    property Tones: TTones read FTones write FTones default [];
  end;

  TPasEntry = class(TCollectionItem)
  private
    FCaption: string;
    FWidth: Integer;
  published
    property Caption: string read FCaption write FCaption;
    property Width: Integer read FWidth write FWidth default 50;
  end;

  TPasWidget = class(TComponent)
  private
    FSmall, FMiddle, FLarge: Integer;
    FBig: Int64;
    FRatio: Extended;
    FText, FLongText: string;
    FEnabled: Boolean;
    FTone: TTone;
    FTones: TTones;
    FLook: TPasLook;
    FLines: TStrings;
    FEntries: TCollection;
    FLetter: Char;
    FBuddy: TComponent;
    FData: Variant;
    procedure SetLook(V: TPasLook);
    procedure SetLines(V: TStrings);
    procedure SetEntries(V: TCollection);
    procedure WriteExtra(Writer: TWriter);
    procedure ReadExtra(Reader: TReader);
    procedure WriteBlob(Stream: TStream);
    procedure ReadBlob(Stream: TStream);
  protected
    procedure DefineProperties(Filer: TFiler); override;
    procedure GetChildren(Proc: TGetChildProc; Root: TComponent); override;
  public
    constructor Create(AOwner: TComponent); override;
    destructor Destroy; override;
  published
    property Small: Integer read FSmall write FSmall default 0;
    property Middle: Integer read FMiddle write FMiddle;
    property Large: Integer read FLarge write FLarge;
    property Big: Int64 read FBig write FBig;
    property Ratio: Extended read FRatio write FRatio;
    property Text: string read FText write FText;
    property LongText: string read FLongText write FLongText;
    property Enabled: Boolean read FEnabled write FEnabled default True;
    property Tone: TTone read FTone write FTone default tnRed;
    property Tones: TTones read FTones write FTones;
    property Look: TPasLook read FLook write SetLook;
    property Lines: TStrings read FLines write SetLines;
    property Entries: TCollection read FEntries write SetEntries;
    property Letter: Char read FLetter write FLetter;
    property Buddy: TComponent read FBuddy write FBuddy;
    property Data: Variant read FData write FData;
  end;

constructor TPasWidget.Create(AOwner: TComponent);
begin
  inherited Create(AOwner);
  FLook := TPasLook.Create;
  FLook.Size := 8;
  FLines := TStringList.Create;
  FEntries := TCollection.Create(TPasEntry);
  FEnabled := True;
  FData := Unassigned;
end;

destructor TPasWidget.Destroy;
begin
  FEntries.Free;
  FLines.Free;
  FLook.Free;
  inherited Destroy;
end;

procedure TPasWidget.SetLook(V: TPasLook);
begin
  FLook.Size := V.Size;
  FLook.Name := V.Name;
  FLook.Tones := V.Tones;
end;

procedure TPasWidget.SetLines(V: TStrings);
begin
  FLines.Assign(V);
end;

procedure TPasWidget.SetEntries(V: TCollection);
begin
  FEntries.Assign(V);
end;

procedure TPasWidget.WriteExtra(Writer: TWriter);
begin
  Writer.WriteListBegin;
  Writer.WriteSingle(2.5);
  Writer.WriteCurrency(12.3456);
  Writer.WriteDate(45000.25);
  Writer.WriteInteger(Int64(-5000000000));
  Writer.WriteIdent('nil');
  { A WideString property is written with a tag of Free Pascal's own; the platform's tag
    comes from WriteWideString. }
  Writer.WriteWideString(WideString('Wide ') + WideChar($0416) + WideChar($4E2D));
  Writer.WriteListEnd;
end;

procedure TPasWidget.ReadExtra(Reader: TReader);
begin
  Reader.ReadListBegin;
  while not Reader.EndOfList do
    Reader.Driver.SkipValue;
  Reader.ReadListEnd;
end;


procedure TPasWidget.WriteBlob(Stream: TStream);
var
  I: Integer;
  B: Byte;
begin
  for I := 0 to 99 do
  begin
    B := Byte(I * 7);
    Stream.WriteBuffer(B, 1);
  end;
end;

procedure TPasWidget.ReadBlob(Stream: TStream);
begin
end;

procedure TPasWidget.DefineProperties(Filer: TFiler);
begin
  inherited DefineProperties(Filer);
  Filer.DefineProperty('Extra', @ReadExtra, @WriteExtra, Name = 'Main');
  Filer.DefineBinaryProperty('Blob', @ReadBlob, @WriteBlob, Name = 'Main');
end;

procedure TPasWidget.GetChildren(Proc: TGetChildProc; Root: TComponent);
var
  I: Integer;
begin
  for I := 0 to ComponentCount - 1 do
    Proc(Components[I]);
end;

{ ------------------------------------------------------------------------------------------ }

function HexOf(const Buf; Len: Integer): string;
var
  P: PByte;
  I: Integer;
begin
  Result := '';
  P := @Buf;
  for I := 0 to Len - 1 do
    Result := Result + IntToHex(P[I], 2);
end;

function TagName(VT: TValueType): string;
begin
  Result := GetEnumName(TypeInfo(TValueType), Ord(VT));
end;

procedure DumpValue(R: TBinaryObjectReader; L: TStrings; const Ind: string);
var
  VT, OT: TValueType;
  E: Extended;
  S: Single;
  C: Currency;
  D: TDateTime;
  Str, Names, Order: string;
  W: WideString;
  M: TMemoryStream;
begin
  VT := R.ReadValue;
  case VT of
    vaNull, vaFalse, vaTrue, vaNil:
      L.Add(Ind + TagName(VT));
    vaList:
      begin
        L.Add(Ind + 'vaList');
        while R.NextValue <> vaNull do
          DumpValue(R, L, Ind + '  ');
        R.ReadValue;
        L.Add(Ind + 'end');
      end;
    vaInt8: L.Add(Ind + 'vaInt8 ' + IntToStr(R.ReadInt8));
    vaInt16: L.Add(Ind + 'vaInt16 ' + IntToStr(R.ReadInt16));
    vaInt32: L.Add(Ind + 'vaInt32 ' + IntToStr(R.ReadInt32));
    vaInt64: L.Add(Ind + 'vaInt64 ' + IntToStr(R.ReadInt64));
    vaExtended:
      begin
        E := R.ReadFloat;
        L.Add(Ind + 'vaExtended ' + HexOf(E, 10));
      end;
    vaSingle:
      begin
        S := R.ReadSingle;
        L.Add(Ind + 'vaSingle ' + HexOf(S, 4));
      end;
    vaCurrency:
      begin
        { The Classes unit's ReadCurrency takes the stored integer for whole units; the value
          is read as the platform stores it, times 10000. }
        R.Read(C, 8);
        L.Add(Ind + 'vaCurrency ' + IntToStr(PInt64(@C)^));
      end;
    vaDate:
      begin
        D := R.ReadDate;
        L.Add(Ind + 'vaDate ' + HexOf(D, 8));
      end;
    vaString, vaLString, vaUTF8String:
      begin
        Str := R.ReadString(VT);
        if Length(Str) > 0 then
          L.Add(Ind + TagName(VT) + ' ' + HexOf(Str[1], Length(Str)))
        else
          L.Add(Ind + TagName(VT) + ' ');
      end;
    vaWString:
      begin
        W := R.ReadWideString;
        if Length(W) > 0 then
          L.Add(Ind + 'vaWString ' + HexOf(W[1], 2 * Length(W)))
        else
          L.Add(Ind + 'vaWString ');
      end;
    vaIdent:
      L.Add(Ind + 'vaIdent ' + R.ReadIdent(VT));
    vaBinary:
      begin
        M := TMemoryStream.Create;
        try
          R.ReadBinary(M);
          if M.Size > 0 then
            L.Add(Ind + 'vaBinary ' + HexOf(M.Memory^, M.Size))
          else
            L.Add(Ind + 'vaBinary ');
        finally
          M.Free;
        end;
      end;
    vaSet:
      begin
        Names := '';
        while True do
        begin
          Str := R.ReadStr;
          if Str = '' then
            Break;
          if Names <> '' then
            Names := Names + ',';
          Names := Names + Str;
        end;
        L.Add(Ind + 'vaSet ' + Names);
      end;
    vaCollection:
      begin
        L.Add(Ind + 'vaCollection');
        while R.NextValue <> vaNull do
        begin
          Order := '-';
          if R.NextValue in [vaInt8, vaInt16, vaInt32] then
          begin
            OT := R.ReadValue;
            case OT of
              vaInt8: Order := IntToStr(R.ReadInt8);
              vaInt16: Order := IntToStr(R.ReadInt16);
              else Order := IntToStr(R.ReadInt32);
            end;
          end;
          if R.ReadValue <> vaList then
            raise EReadError.Create('collection item without list');
          L.Add(Ind + '  item ' + Order);
          while R.NextValue <> vaNull do
          begin
            L.Add(Ind + '    prop ' + R.ReadStr);
            DumpValue(R, L, Ind + '      ');
          end;
          R.ReadValue;
          L.Add(Ind + '  end');
        end;
        R.ReadValue;
        L.Add(Ind + 'end');
      end;
    else
      raise EReadError.CreateFmt('unknown value type %d', [Ord(VT)]);
  end;
end;

procedure DumpObject(R: TBinaryObjectReader; L: TStrings; const Ind: string);
var
  Flags: TFilerFlags;
  ChildPos, F: Integer;
  Cls, Nm: string;
begin
  ChildPos := 0;
  Cls := '';
  Nm := '';
  R.BeginComponent(Flags, ChildPos, Cls, Nm);
  F := 0;
  if ffInherited in Flags then F := F or 1;
  if ffChildPos in Flags then F := F or 2;
  if ffInline in Flags then F := F or 4;
  L.Add(Ind + 'object ' + IntToStr(F) + ' ' + IntToStr(ChildPos) + ' ' + Cls + ' ' + Nm);
  while R.NextValue <> vaNull do
  begin
    L.Add(Ind + '  prop ' + R.ReadStr);
    DumpValue(R, L, Ind + '    ');
  end;
  R.ReadValue;
  while R.NextValue <> vaNull do
    DumpObject(R, L, Ind + '  ');
  R.ReadValue;
  L.Add(Ind + 'end');
end;

procedure Dump(Input: TStream; L: TStrings);
var
  R: TBinaryObjectReader;
begin
  while Input.Position < Input.Size do
  begin
    R := TBinaryObjectReader.Create(Input, 4096);
    try
      R.BeginRootComponent;
      DumpObject(R, L, '');
    finally
      R.Free;
    end;
  end;
end;

procedure Generate(Output: TStream);
var
  Main, Child, Grand: TPasWidget;
  E: TPasEntry;
begin
  Main := TPasWidget.Create(nil);
  try
    Main.Name := 'Main';
    Main.Small := -7;
    Main.Middle := 1000;
    Main.Large := 100000;
    Main.Big := 1234567890123;
    Main.Ratio := 0.375;
    Main.Text := 'It''s a "test"' + #13#10 + 'line two';
    Main.LongText := StringOfChar('x', 300);
    Main.Enabled := False;
    Main.Tone := tnBlue;
    Main.Tones := [tnRed, tnWhite];
    Main.Look.Size := 12;
    Main.Look.Name := 'Serif';
    Main.Look.Tones := [tnGreen];
    Main.Lines.Add('first');
    Main.Lines.Add('');
    Main.Lines.Add('third line');
    E := TPasEntry(Main.Entries.Add);
    E.Caption := 'one';
    E := TPasEntry(Main.Entries.Add);
    E.Caption := 'two';
    E.Width := 70;
    Main.Letter := 'Q';
    Main.Data := Null;
    Child := TPasWidget.Create(Main);
    Child.Name := 'Child';
    Child.Middle := -300;
    Child.Buddy := Main;
    Grand := TPasWidget.Create(Child);
    Grand.Name := 'Grand';
    Grand.Data := 42;
    Output.WriteComponent(Main);
  finally
    Main.Free;
  end;
end;

procedure Reread(Input, Output: TStream);
var
  W: TComponent;
begin
  { Reading into a root made here: read with a nil root, the Classes unit leaves the
    children without an owner. }
  W := TPasWidget.Create(nil);
  try
    Input.ReadComponent(W);
    Output.WriteComponent(W);
  finally
    W.Free;
  end;
end;

procedure Convert(const Mode: string; Input, Output: TStream);
begin
  while Input.Position < Input.Size do
  begin
    if Mode = 'b2t' then
      ObjectBinaryToText(Input, Output)
    else if Mode = 't2b' then
      ObjectTextToBinary(Input, Output)
    else if Mode = 'r2t' then
      ObjectResourceToText(Input, Output)
    else if Mode = 't2r' then
      ObjectTextToResource(Input, Output)
    else
      raise Exception.Create('unknown mode ' + Mode);
  end;
end;

var
  Input, Output: TMemoryStream;
  L: TStringList;
begin
  RegisterClasses([TPasWidget]);
  Input := TMemoryStream.Create;
  Output := TMemoryStream.Create;
  L := TStringList.Create;
  try
    try
      if ParamStr(1) = 'gen' then
      begin
        Generate(Output);
        Output.SaveToFile(ParamStr(2));
      end
      else
      begin
        Input.LoadFromFile(ParamStr(2));
        if ParamStr(1) = 'reread' then
        begin
          Reread(Input, Output);
          Output.SaveToFile(ParamStr(3));
        end
        else if ParamStr(1) = 'dump' then
        begin
          Dump(Input, L);
          L.SaveToFile(ParamStr(3));
        end
        else
        begin
          Convert(ParamStr(1), Input, Output);
          Output.SaveToFile(ParamStr(3));
        end;
      end;
    except
      on E: Exception do
      begin
        WriteLn(StdErr, 'fpconv: ', E.ClassName, ': ', E.Message);
        Halt(1);
      end;
    end;
  finally
    L.Free;
    Output.Free;
    Input.Free;
  end;
end.
