    // the count of items
    { Reads the items from the stream;
      the stream must be open. }
    function Add(const S: string): Integer; virtual;
    constructor Create(AOwner: TComponent); override;
    destructor Destroy; override;
    function GetCount: Integer;
    property Items[Index: Integer]: TItem read GetItem write SetItem; default;
    procedure ReadItems(Stream: TStream;
      Count: Integer;
      Options: TReadOptions);
    procedure WMSize(var Message: TWMSize); message WM_SIZE;
