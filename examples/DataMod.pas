unit DataMod;

interface

uses
  SysUtils, Classes, ExtCtrls, ImgList, Controls;

type
  TDataModuleMain = class(TDataModule)
    AutoSaveTimer: TTimer;
    Images: TImageList;
    procedure DataModuleCreate(Sender: TObject);
    procedure AutoSaveTimerTimer(Sender: TObject);
  private
    FSaveCount: Integer;
  public
    property SaveCount: Integer read FSaveCount;
  end;

var
  DataModuleMain: TDataModuleMain;

implementation

{$R *.dfm}

procedure TDataModuleMain.DataModuleCreate(Sender: TObject);
begin
  FSaveCount := 0;
end;

procedure TDataModuleMain.AutoSaveTimerTimer(Sender: TObject);
begin
  // Автосохранение раз в минуту
  Inc(FSaveCount);
end;

end.
