unit Utils;

{ Общие процедуры примера: работа со строками и датами. }

interface

uses
  SysUtils, Classes;

const
  DefaultCaption = 'Пример проекта';
  MaxRecentFiles = 8;

type
  TRecentList = class(TStringList)
  private
    FMaxCount: Integer;
  public
    constructor Create;
    procedure AddFile(const FileName: string);
    property MaxCount: Integer read FMaxCount write FMaxCount;
  end;

function TrimCaption(const S: string; MaxLen: Integer): string;
function FormatStamp(const When: TDateTime): string;
function CountWords(const S: string): Integer;

implementation

{ TRecentList }

constructor TRecentList.Create;
begin
  inherited Create;
  FMaxCount := MaxRecentFiles;
end;

procedure TRecentList.AddFile(const FileName: string);
var
  I: Integer;
begin
  I := IndexOf(FileName);
  if I >= 0 then
    Delete(I);
  Insert(0, FileName);
  while Count > FMaxCount do
    Delete(Count - 1);
end;

function TrimCaption(const S: string; MaxLen: Integer): string;
begin
  if Length(S) <= MaxLen then
    Result := S
  else
    Result := Copy(S, 1, MaxLen - 3) + '...';
end;

function FormatStamp(const When: TDateTime): string;
begin
  // Дата и время в виде, удобном для журнала
  Result := FormatDateTime('dd.mm.yyyy hh:nn:ss', When);
end;

function CountWords(const S: string): Integer;
var
  I: Integer;
  InWord: Boolean;
begin
  Result := 0;
  InWord := False;
  for I := 1 to Length(S) do
    if S[I] in [' ', #9, #13, #10] then
      InWord := False
    else if not InWord then
    begin
      InWord := True;
      Inc(Result);
    end;
end;

end.
